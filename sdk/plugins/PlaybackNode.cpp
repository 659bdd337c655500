#include "PlaybackNode.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::playback {

PlaybackNode::PlaybackNode(const recording::RecordedDevice::Node& recorded, std::function<void(bool)> streaming)
    : m_recorded(recorded), m_values(recorded.typeName, recorded.properties, "the recorded node " + recorded.serial),
      m_streaming(std::move(streaming))
{
    m_values.set("configuration", recorded.configuration);
}

PropertyValue PlaybackNode::getProperty(const std::string& name) const
{
    return m_values.get(name);
}

void PlaybackNode::setProperty(const std::string& name, const PropertyValue& value)
{
    if (name == "configuration")
        return setConfiguration(value);
    m_values.set(name, value);
}

void PlaybackNode::setConfiguration(const PropertyValue& configuration)
{
    if (configuration != m_recorded.configuration)
        throw ArgumentException("a recording plays only the configuration it was recorded in");
}

void PlaybackNode::start(plugin::SampleSink* sink)
{
    std::function<void(bool)> streaming;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_sink = sink;
        streaming = m_streaming;
    }
    if (streaming)
        streaming(true);
}

void PlaybackNode::stop()
{
    std::function<void(bool)> streaming;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_sink = nullptr;
        streaming = m_streaming;
    }
    if (streaming)
        streaming(false);
}

void PlaybackNode::detach()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_sink = nullptr;
    m_streaming = nullptr;
}

bool PlaybackNode::isStarted() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_sink != nullptr;
}

void PlaybackNode::deliver(DepthNode::NewSampleReceivedData&& sample)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_sink)
        return;
    if (!m_values.isOn("enablePhaseMap"))
        sample.phaseMap = {};
    if (!m_values.isOn("enableConfidenceMap"))
        sample.confidenceMap = {};
    if (!m_values.isOn("enableDepthMap"))
        sample.depthMap = {};
    if (!m_values.isOn("enableDepthMapFloatingPoint"))
        sample.depthMapFloatingPoint = {};
    if (!m_values.isOn("enableVertices"))
        sample.vertices = {};
    if (!m_values.isOn("enableVerticesFloatingPoint"))
        sample.verticesFloatingPoint = {};
    if (!m_values.isOn("enableUvMap"))
        sample.uvMap = {};
    m_sink->depthSample(this, std::move(sample));
}

void PlaybackNode::deliver(ColorNode::NewSampleReceivedData&& sample)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_sink)
        return;
    if (!m_values.isOn("enableColorMap"))
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
