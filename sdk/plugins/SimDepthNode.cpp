#include "SimDepthNode.h"

#include "SimDevice.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Clock.h"
#include "Zerlane/Utils/Format.h"

#include <algorithm>
#include <cmath>

namespace Zerlane::sim {

namespace {

std::string describe(const DepthNodeConfiguration& c)
{
    return Utils::Format("% at % fps, % mode, saturation %") % FrameFormat_toString(c.frameFormat) % c.frameRate %
           DepthNode::CameraMode_toString(c.mode) % (c.saturation ? "on" : "off");
}

} // namespace

SimDepthNode::SimDepthNode(std::shared_ptr<SimCameraState> camera, std::weak_ptr<SimDevice> device,
                           std::shared_ptr<ListenerLink> link)
    : SimNode({NodeKind::Depth, typeSpec(), 0x0101, 0}, declarations(), std::move(camera), std::move(device),
              std::move(link)),
      m_renderer(seed())
{
}

SimDepthNode::~SimDepthNode()
{
    stop();
}

std::vector<PropertyDeclaration> SimDepthNode::declarations()
{
    using D = PropertyDeclaration;
    // Delivery options are per client and need no control.
    return {
        D::value("enablePhaseMap", false, false),
        D::value("enableConfidenceMap", false, false),
        D::value("enableDepthMap", false, false),
        D::value("enableDepthMapFloatingPoint", false, false),
        D::value("enableVertices", false, false),
        D::value("enableVerticesFloatingPoint", false, false),
        D::value("enableUvMap", false, false),
        D::value("depthMap3Planes", false, false),
        D::value("depthMapFloatingPoint3Planes", false, false),
        D::measured("range", DepthRenderer::range(defaultConfiguration().mode)),
        D::value("configuration", defaultConfiguration()),
        D::number("confidenceThreshold", int32_t(100), 0, 32767),
        D::number("illuminationLevel", int32_t(80), 0, 100),
        D::value("exposureAuto", EXPOSURE_AUTO_APERTURE_PRIORITY),
        D::measured("sensorTemperature", 41.f),
        D::value("firmwareTag", std::string("ztsim-depth-1.4.0")),
        D::value("_noFan", false).hidden(),
    };
}

std::shared_ptr<const plugin::TypeSpec> SimDepthNode::typeSpec()
{
    static const std::shared_ptr<const plugin::TypeSpec> type = PropertyTable::makeType(TypeName, declarations());
    return type;
}

std::vector<DepthNodeConfiguration> SimDepthNode::offeredConfigurations()
{
    std::vector<DepthNodeConfiguration> list;
    for (FrameFormat format : {FRAME_FORMAT_QVGA, FRAME_FORMAT_VGA}) {
        std::vector<int32_t> rates{15, 25, 30};
        if (format == FRAME_FORMAT_QVGA)
            rates.push_back(60);
        for (int32_t rate : rates)
            for (CameraMode mode : {CAMERA_MODE_CLOSE_RANGE, CAMERA_MODE_LONG_RANGE})
                for (bool saturation : {false, true})
                    list.push_back(DepthNodeConfiguration{format, rate, mode, saturation});
    }
    return list;
}

DepthNodeConfiguration SimDepthNode::defaultConfiguration()
{
    return DepthNodeConfiguration{FRAME_FORMAT_VGA, 30, CAMERA_MODE_LONG_RANGE, false};
}

std::vector<PropertyValue> SimDepthNode::configurations() const
{
    std::vector<PropertyValue> values;
    for (const DepthNodeConfiguration& c : offeredConfigurations())
        values.emplace_back(c);
    return values;
}

void SimDepthNode::checkOffered(const PropertyValue& configuration) const
{
    const auto* depth = std::get_if<DepthNodeConfiguration>(&configuration);
    if (!depth)
        throw ArgumentException(Utils::Format("a depth node takes a % value, not a %") %
                                PropertyType_toString(PropertyType::DepthConfiguration) %
                                PropertyType_toString(PropertyType(configuration.index())));
    const std::vector<DepthNodeConfiguration> offered = offeredConfigurations();
    if (std::find(offered.begin(), offered.end(), *depth) == offered.end())
        throw ArgumentException(Utils::Format("the depth node of % does not offer %") % serialNumber() %
                                describe(*depth));
}

float SimDepthNode::range() const
{
    return std::get<float>(getProperty("range"));
}

CameraMode SimDepthNode::cameraMode() const
{
    return setting<DepthNodeConfiguration>("configuration").mode;
}

std::optional<PropertyValue> SimDepthNode::measuredProperty(const std::string& name) const
{
    if (name == "range")
        return DepthRenderer::range(m_properties.value<DepthNodeConfiguration>("configuration").mode);
    if (name == "sensorTemperature") {
        // Warms up slowly and drifts with the room; without the fan it runs hotter.
        const double t = double(Utils::Clock::now()) * 1e-6;
        const float drift = float(0.8 * std::sin(2.0 * M_PI * std::fmod(t, 420.0) / 420.0));
        return 41.f + drift + (m_properties.value<bool>("_noFan") ? 7.5f : 0.f);
    }
    return std::nullopt;
}

void SimDepthNode::configurationChanged(const PropertyValue& before, const PropertyValue& after)
{
    const CameraMode was = std::get<DepthNodeConfiguration>(before).mode;
    const CameraMode now = std::get<DepthNodeConfiguration>(after).mode;
    if (DepthRenderer::range(was) != DepthRenderer::range(now))
        reportPropertyChanged("range");
}

void SimDepthNode::reportMeasuredValues()
{
    reportPropertyChanged("sensorTemperature");
}

std::chrono::microseconds SimDepthNode::samplePeriod() const
{
    const int32_t rate = setting<DepthNodeConfiguration>("configuration").frameRate;
    return std::chrono::microseconds(1000000 / std::max(rate, 1));
}

DepthRenderer::Settings SimDepthNode::currentSettings() const
{
    DepthRenderer::Settings s;
    {
        std::lock_guard<std::mutex> lock(m_settingsMutex);
        s.configuration = m_properties.value<DepthNodeConfiguration>("configuration");
        s.phaseMap = m_properties.value<bool>("enablePhaseMap");
        s.confidenceMap = m_properties.value<bool>("enableConfidenceMap");
        s.depthMap = m_properties.value<bool>("enableDepthMap");
        s.depthMapFloatingPoint = m_properties.value<bool>("enableDepthMapFloatingPoint");
        s.vertices = m_properties.value<bool>("enableVertices");
        s.verticesFloatingPoint = m_properties.value<bool>("enableVerticesFloatingPoint");
        s.uvMap = m_properties.value<bool>("enableUvMap");
        s.depthMap3Planes = m_properties.value<bool>("depthMap3Planes");
        s.depthMapFloatingPoint3Planes = m_properties.value<bool>("depthMapFloatingPoint3Planes");
        s.confidenceThreshold = m_properties.value<int32_t>("confidenceThreshold");
        s.illuminationLevel = m_properties.value<int32_t>("illuminationLevel");
    }
    if (const std::shared_ptr<SimDevice> owner = device())
        s.colorFormat = owner->colorFrameFormat();
    return s;
}

void SimDepthNode::produceSample(plugin::SampleSink& sink, uint64_t captureTime)
{
    sink.depthSample(this, m_renderer.render(currentSettings(), captureTime));
}

} // namespace Zerlane::sim
