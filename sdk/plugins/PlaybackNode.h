#pragma once

#include "RecordedDevice.h"
#include "RecordedValues.h"

#include "Zerlane/plugin/NodeDriver.h"
#include "Zerlane/plugin/SampleSink.h"

#include <functional>
#include <memory>
#include <mutex>

namespace Zerlane::playback {

// One recorded stream source as a camera node: the recorded identity, properties and configuration.
// It offers only the configuration it was recorded in. Samples come from its device's playback thread,
// which calls deliver(); the node hands them on while started, without the maps its client switched off.
class PlaybackNode : public plugin::NodeDriver {
public:
    // `streaming` is told when the node starts (true) or stops (false).
    PlaybackNode(const recording::RecordedDevice::Node& recorded, std::function<void(bool)> streaming);

    NodeKind kind() const override { return m_recorded.kind; }
    std::shared_ptr<const plugin::TypeSpec> type() const override { return m_values.type(); }
    std::string serialNumber() const override { return m_recorded.serial; }
    int32_t vid() const override { return m_recorded.vid; }
    int32_t pid() const override { return m_recorded.pid; }
    int32_t revision() const override { return m_recorded.revision; }
    int32_t mediaInterface() const override { return m_recorded.mediaInterface; }
    PropertyValue getProperty(const std::string& name) const override;
    void setProperty(const std::string& name, const PropertyValue& value) override;
    std::vector<PropertyValue> configurations() const override { return {m_recorded.configuration}; }
    PropertyValue configuration() const override { return m_recorded.configuration; }
    void setConfiguration(const PropertyValue& configuration) override;
    float range() const override { return m_recorded.range; }
    void start(plugin::SampleSink* sink) override;
    void stop() override;

    bool isStarted() const;
    // The device is going away: starting and stopping no longer reach it (the library may hold the node
    // longer than the device).
    void detach();
    void deliver(DepthNode::NewSampleReceivedData&& sample);
    void deliver(ColorNode::NewSampleReceivedData&& sample);
    void deliver(AudioNode::NewSampleReceivedData&& sample);

private:
    recording::RecordedDevice::Node m_recorded;
    RecordedValues m_values;
    std::function<void(bool)> m_streaming;
    mutable std::mutex m_mutex; // guards the sink; held while a sample is handed on
    plugin::SampleSink* m_sink = nullptr;
};

} // namespace Zerlane::playback
