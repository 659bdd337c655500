#include "SimColorNode.h"

#include "SimDevice.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Format.h"

#include <algorithm>

namespace Zerlane::sim {

namespace {

ColorNodeConfiguration colorConfiguration(FrameFormat format, CompressionType compression, int32_t rate,
                                          PowerLineFrequency frequency)
{
    ColorNodeConfiguration c;
    c.frameFormat = format;
    c.compression = compression;
    c.frameRate = rate;
    c.powerLineFrequency = frequency;
    return c;
}

} // namespace

SimColorNode::SimColorNode(std::shared_ptr<SimCameraState> camera, std::weak_ptr<SimDevice> device,
                           std::shared_ptr<ListenerLink> link)
    : SimNode({NodeKind::Color, typeSpec(), 0x0102, 1}, declarations(), std::move(camera), std::move(device),
              std::move(link))
{
}

SimColorNode::~SimColorNode()
{
    stop();
}

std::vector<PropertyDeclaration> SimColorNode::declarations()
{
    using D = PropertyDeclaration;
    return {
        D::value("enableColorMap", false, false),
        D::value("configuration", defaultConfiguration()),
        D::number("brightness", int32_t(0), -100, 100),
        D::number("contrast", int32_t(100), 0, 200),
        D::number("gain", 1.f, 0.25, 8.0),
        D::value("exposureAuto", EXPOSURE_AUTO_APERTURE_PRIORITY),
        D::value("whiteBalanceAuto", true),
    };
}

std::shared_ptr<const plugin::TypeSpec> SimColorNode::typeSpec()
{
    static const std::shared_ptr<const plugin::TypeSpec> type = PropertyTable::makeType(TypeName, declarations());
    return type;
}

std::vector<ColorNodeConfiguration> SimColorNode::offeredConfigurations()
{
    std::vector<ColorNodeConfiguration> list;
    for (FrameFormat format : {FRAME_FORMAT_VGA, FRAME_FORMAT_HD720})
        for (CompressionType compression : {COMPRESSION_TYPE_YUY2, COMPRESSION_TYPE_NONE})
            for (int32_t rate : {15, 30})
                for (PowerLineFrequency frequency :
                     {POWER_LINE_FREQUENCY_DISABLED, POWER_LINE_FREQUENCY_50HZ, POWER_LINE_FREQUENCY_60HZ})
                    list.push_back(colorConfiguration(format, compression, rate, frequency));
    return list;
}

ColorNodeConfiguration SimColorNode::defaultConfiguration()
{
    return colorConfiguration(FRAME_FORMAT_VGA, COMPRESSION_TYPE_YUY2, 30, POWER_LINE_FREQUENCY_50HZ);
}

std::vector<PropertyValue> SimColorNode::configurations() const
{
    std::vector<PropertyValue> values;
    for (const ColorNodeConfiguration& c : offeredConfigurations())
        values.emplace_back(c);
    return values;
}

FrameFormat SimColorNode::frameFormat() const
{
    return setting<ColorNodeConfiguration>("configuration").frameFormat;
}

void SimColorNode::checkOffered(const PropertyValue& configuration) const
{
    const auto* color = std::get_if<ColorNodeConfiguration>(&configuration);
    if (!color)
        throw ArgumentException(Utils::Format("a colour node takes a % value, not a %") %
                                PropertyType_toString(PropertyType::ColorConfiguration) %
                                PropertyType_toString(PropertyType(configuration.index())));
    const std::vector<ColorNodeConfiguration> offered = offeredConfigurations();
    if (std::find(offered.begin(), offered.end(), *color) == offered.end())
        throw ArgumentException(Utils::Format("the colour node of % does not offer % % at % fps, power line %") %
                                serialNumber() % FrameFormat_toString(color->frameFormat) %
                                CompressionType_toString(color->compression) % color->frameRate %
                                PowerLineFrequency_toString(color->powerLineFrequency));
}

std::chrono::microseconds SimColorNode::samplePeriod() const
{
    const int32_t rate = setting<ColorNodeConfiguration>("configuration").frameRate;
    return std::chrono::microseconds(1000000 / std::max(rate, 1));
}

Scene::Kind SimColorNode::sceneKind() const
{
    // The colour camera pictures what the depth camera's mode shows.
    const std::shared_ptr<SimDevice> owner = device();
    return Scene::kindFor(owner ? owner->depthCameraMode() : CAMERA_MODE_LONG_RANGE);
}

void SimColorNode::produceSample(plugin::SampleSink& sink, uint64_t captureTime)
{
    ColorNodeConfiguration configuration;
    ColorRenderer::Picture picture;
    bool enabled = false;
    {
        std::lock_guard<std::mutex> lock(m_settingsMutex);
        configuration = m_properties.value<ColorNodeConfiguration>("configuration");
        enabled = m_properties.value<bool>("enableColorMap");
        picture.brightness = m_properties.value<int32_t>("brightness");
        picture.contrast = m_properties.value<int32_t>("contrast");
        picture.gain = m_properties.value<float>("gain");
        picture.whiteBalanceAuto = m_properties.value<bool>("whiteBalanceAuto");
    }
    ColorNode::NewSampleReceivedData sample;
    sample.captureConfiguration = configuration;
    sample.timeOfCapture = captureTime;
    if (enabled) {
        const std::size_t bytes = ColorRenderer::frameBytes(configuration);
        std::shared_ptr<uint8_t> block = m_pool.acquire(bytes);
        m_renderer.render(configuration, picture, sceneKind(), double(captureTime) * 1e-6, block.get());
        sample.colorMap = Pointer<uint8_t>(block, block.get(), int32_t(bytes));
    }
    sink.colorSample(this, std::move(sample));
}

} // namespace Zerlane::sim
