#include "SimAudioNode.h"

#include "SimDevice.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Format.h"

#include <algorithm>

namespace Zerlane::sim {

namespace {

AudioNodeConfiguration audioConfiguration(int32_t rate, int32_t bits, int32_t channels)
{
    AudioNodeConfiguration c;
    c.audioFormat.sampleRate = rate;
    c.audioFormat.bitsPerSample = bits;
    c.audioFormat.nbChannels = channels;
    return c;
}

} // namespace

SimAudioNode::SimAudioNode(std::shared_ptr<SimCameraState> camera, std::weak_ptr<SimDevice> device,
                           std::shared_ptr<ListenerLink> link)
    : SimNode({NodeKind::Audio, typeSpec(), 0x0103, 2}, declarations(), std::move(camera), std::move(device),
              std::move(link)),
      m_synth(seed())
{
}

SimAudioNode::~SimAudioNode()
{
    stop();
}

std::vector<PropertyDeclaration> SimAudioNode::declarations()
{
    using D = PropertyDeclaration;
    return {
        D::value("configuration", defaultConfiguration()),
        D::number("volume", int32_t(80), 0, 100),
        D::value("mute", false),
    };
}

std::shared_ptr<const plugin::TypeSpec> SimAudioNode::typeSpec()
{
    static const std::shared_ptr<const plugin::TypeSpec> type = PropertyTable::makeType(TypeName, declarations());
    return type;
}

std::vector<AudioNodeConfiguration> SimAudioNode::offeredConfigurations()
{
    std::vector<AudioNodeConfiguration> list;
    for (int32_t rate : {16000, 44100})
        for (int32_t channels : {1, 2})
            list.push_back(audioConfiguration(rate, 16, channels));
    return list;
}

AudioNodeConfiguration SimAudioNode::defaultConfiguration()
{
    return audioConfiguration(16000, 16, 1);
}

std::vector<PropertyValue> SimAudioNode::configurations() const
{
    std::vector<PropertyValue> values;
    for (const AudioNodeConfiguration& c : offeredConfigurations())
        values.emplace_back(c);
    return values;
}

void SimAudioNode::checkOffered(const PropertyValue& configuration) const
{
    const auto* audio = std::get_if<AudioNodeConfiguration>(&configuration);
    if (!audio)
        throw ArgumentException(Utils::Format("an audio node takes a % value, not a %") %
                                PropertyType_toString(PropertyType::AudioConfiguration) %
                                PropertyType_toString(PropertyType(configuration.index())));
    const std::vector<AudioNodeConfiguration> offered = offeredConfigurations();
    if (std::find(offered.begin(), offered.end(), *audio) == offered.end())
        throw ArgumentException(Utils::Format("the audio node of % does not offer % Hz, % bits, % channel(s)") %
                                serialNumber() % audio->audioFormat.sampleRate % audio->audioFormat.bitsPerSample %
                                audio->audioFormat.nbChannels);
}

std::chrono::microseconds SimAudioNode::samplePeriod() const
{
    return std::chrono::microseconds(50000);
}

void SimAudioNode::produceSample(plugin::SampleSink& sink, uint64_t captureTime)
{
    AudioFormat format;
    int32_t volume = 0;
    bool mute = false;
    {
        std::lock_guard<std::mutex> lock(m_settingsMutex);
        format = m_properties.value<AudioNodeConfiguration>("configuration").audioFormat;
        volume = m_properties.value<int32_t>("volume");
        mute = m_properties.value<bool>("mute");
    }
    const std::shared_ptr<SimDevice> owner = device();
    const float humHz = owner ? owner->fanHumFrequency() : 0.f;

    const std::size_t bytes = AudioSynth::blockBytes(format);
    std::shared_ptr<uint8_t> block = m_pool.acquire(bytes);
    m_synth.render(format, volume, mute, humHz, block.get());

    AudioNode::NewSampleReceivedData sample;
    sample.audioData = Pointer<uint8_t>(block, block.get(), int32_t(bytes));
    sample.audioFormat = format;
    // The block began 1/20 s before it was complete.
    sample.timeOfCapture = captureTime > 50000 ? captureTime - 50000 : captureTime;
    sink.audioSample(this, std::move(sample));
}

} // namespace Zerlane::sim
