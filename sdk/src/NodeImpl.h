#pragma once

#include "InterfaceImpl.h"
#include "SampleQueue.h"

#include "Zerlane/AudioNode.h"
#include "Zerlane/ColorNode.h"
#include "Zerlane/DepthNode.h"
#include "Zerlane/plugin/NodeDriver.h"

#include <vector>

namespace Zerlane::detail {

class DeviceImpl;

// One stream source as one context sees it: its registration, streaming state and waiting samples.
class NodeImpl : public InterfaceImpl {
public:
    NodeImpl(std::weak_ptr<ContextImpl> context, const ContextImpl* owner, std::shared_ptr<DeviceImpl> device,
             std::shared_ptr<plugin::NodeDriver> driver);

    bool isDevice() const override { return false; }
    std::string description() const override;
    bool hasControl() const override;
    bool controlledByAnotherClient() const override;
    void firePropertyChanged(const PropertyBase& property) override;

    Node handle();
    NodeKind kind() const { return m_kind; }
    const std::shared_ptr<DeviceImpl>& device() const { return m_device; }
    // The plug-in's node; throws InvalidOperationException once the node is gone.
    plugin::NodeDriver& driver() const;
    // The plug-in's node whatever the state (to stop it after it is gone).
    plugin::NodeDriver& lastDriver() const { return *m_driver; }
    const plugin::NodeDriver* driverKey() const { return m_driver.get(); }

    // Configurations as the plug-in gives them, values of the kind's configuration type.
    std::vector<PropertyValue> configurations() const;
    PropertyValue configuration() const;
    // Needs control; reports the change as the "configuration" property when the type declares one.
    void setConfiguration(const PropertyValue& configuration);
    // Throws InvalidOperationException naming what needs control when this context lacks it.
    void ensureControl(const std::string& what) const;

    // Registered with its context (wants samples).
    bool isRegistered() const { return m_registered.load(); }
    void setRegistered(bool registered) { m_registered = registered; }
    // The plug-in is producing into the context's sink.
    bool isStreaming() const { return m_streaming.load(); }
    void setStreaming(bool streaming) { m_streaming = streaming; }

    SampleQueue& samples() { return m_samples; }
    // The sample type this node's kind delivers.
    bool accepts(const SampleQueue::Sample& sample) const;
    // Delivers the oldest waiting sample to the handlers, if it is still wanted. Runs inside run().
    void deliverNextSample();

    Event<Node, PropertyChangedData>& propertyChangedEvent() { return m_propertyChanged; }
    Event<DepthNode, DepthNode::NewSampleReceivedData>& depthSampleEvent() { return m_depthSample; }
    Event<ColorNode, ColorNode::NewSampleReceivedData>& colorSampleEvent() { return m_colorSample; }
    Event<AudioNode, AudioNode::NewSampleReceivedData>& audioSampleEvent() { return m_audioSample; }

protected:
    PropertyValue driverProperty(const std::string& name) const override;
    void setDriverProperty(const std::string& name, const PropertyValue& value) override;

private:
    std::shared_ptr<DeviceImpl> m_device;
    std::shared_ptr<plugin::NodeDriver> m_driver;
    NodeKind m_kind;
    std::atomic<bool> m_registered {false};
    std::atomic<bool> m_streaming {false};
    SampleQueue m_samples;
    Event<Node, PropertyChangedData> m_propertyChanged;
    Event<DepthNode, DepthNode::NewSampleReceivedData> m_depthSample;
    Event<ColorNode, ColorNode::NewSampleReceivedData> m_colorSample;
    Event<AudioNode, AudioNode::NewSampleReceivedData> m_audioSample;
};

} // namespace Zerlane::detail
