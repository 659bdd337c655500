#include "PlaybackNode.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::playback {

PlaybackNode::PlaybackNode(const recording::RecordedDevice::Node& recorded, std::function<void(bool)> streaming)
    : m_recorded(recorded), m_streaming(std::move(streaming))
{
    auto type = std::make_shared<plugin::TypeSpec>();
    type->name = recorded.typeName;
    for (const recording::RecordedDevice::Property& property : recorded.properties) {
        type->properties.push_back(property.spec);
        m_values[property.spec.name] = property.value;
    }
    m_values["configuration"] = recorded.configuration;
    m_type = type;
}

PropertyValue PlaybackNode::getProperty(const std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_values.find(name);
    if (found == m_values.end())
        throw ArgumentException("the recorded node " + m_recorded.serial + " has no property " + name);
    return found->second;
}

void PlaybackNode::setProperty(const std::string& name, const PropertyValue& value)
{
    if (name == "configuration")
        return setConfiguration(value);
    std::lock_guard<std::mutex> lock(m_mutex);
    // A recording cannot change what it holds; the values are kept so that clients read back what they set,
    // and the delivery options ("enable...Map") take effect.
    m_values[name] = value;
}

void PlaybackNode::setConfiguration(const PropertyValue& configuration)
{
    if (configuration != m_recorded.configuration)
        throw ArgumentException("a recording plays only the configuration it was recorded in");
}

void PlaybackNode::start(plugin::SampleSink* sink)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_sink = sink;
    }
    m_streaming(true);
}

void PlaybackNode::stop()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_sink = nullptr;
    }
    m_streaming(false);
}

bool PlaybackNode::isStarted() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_sink != nullptr;
}

bool PlaybackNode::enabled(const std::string& property) const
{
    const auto found = m_values.find(property);
    const bool* value = found == m_values.end() ? nullptr : std::get_if<bool>(&found->second);
    return !value || *value; // a recording without the switch delivers what it holds
}

void PlaybackNode::deliver(DepthNode::NewSampleReceivedData&& sample)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_sink)
        return;
    if (!enabled("enablePhaseMap"))
        sample.phaseMap = {};
    if (!enabled("enableConfidenceMap"))
        sample.confidenceMap = {};
    if (!enabled("enableDepthMap"))
        sample.depthMap = {};
    if (!enabled("enableDepthMapFloatingPoint"))
        sample.depthMapFloatingPoint = {};
    if (!enabled("enableVertices"))
        sample.vertices = {};
    if (!enabled("enableVerticesFloatingPoint"))
        sample.verticesFloatingPoint = {};
    if (!enabled("enableUvMap"))
        sample.uvMap = {};
    m_sink->depthSample(this, std::move(sample));
}

void PlaybackNode::deliver(ColorNode::NewSampleReceivedData&& sample)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_sink)
        return;
    if (!enabled("enableColorMap"))
        sample.colorMap = {};
    m_sink->colorSample(this, std::move(sample));
}

void PlaybackNode::deliver(AudioNode::NewSampleReceivedData&& sample)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_sink)
        m_sink->audioSample(this, std::move(sample));
}

} // namespace Zerlane::playback
