#pragma once

#include "ContextImpl.h"
#include "SampleQueue.h"

#include "Zerlane/plugin/Driver.h"
#include "Zerlane/plugin/SampleSink.h"

#include <mutex>
#include <unordered_map>
#include <vector>

namespace Zerlane::detail {

// A context that drives device drivers in this process: the plug-ins, or (ClientRuntime) the server's
// cameras. It is every driver's listener and every streaming node's sample sink; all its callbacks may
// come from any thread.
class StandaloneRuntime : public ContextImpl, public plugin::DriverListener, public plugin::SampleSink {
public:
    StandaloneRuntime();
    ~StandaloneRuntime() override;

    // Opens every driver; the devices they report now are present without added-events.
    void open(std::vector<std::unique_ptr<plugin::Driver>> drivers);

    std::vector<Device> devices() const override;
    void registerNode(NodeImpl& node) override;
    void unregisterNode(NodeImpl& node) override;
    void requestControl(InterfaceImpl& target, int32_t timeoutMs) override;
    void releaseControl(InterfaceImpl& target) override;
    void startNodes() override;
    void stopNodes() override;

    void deviceAdded(const std::shared_ptr<plugin::DeviceDriver>& device) override;
    void deviceRemoved(const std::shared_ptr<plugin::DeviceDriver>& device) override;
    void nodeAdded(plugin::DeviceDriver* device, const std::shared_ptr<plugin::NodeDriver>& node) override;
    void nodeRemoved(plugin::DeviceDriver* device, const std::shared_ptr<plugin::NodeDriver>& node) override;
    void propertyChanged(plugin::DeviceDriver* device, plugin::NodeDriver* node, const std::string& name) override;
    void transportFailed(const std::string& message) override;

    void depthSample(plugin::NodeDriver* node, DepthNode::NewSampleReceivedData&& sample) override;
    void colorSample(plugin::NodeDriver* node, ColorNode::NewSampleReceivedData&& sample) override;
    void audioSample(plugin::NodeDriver* node, AudioNode::NewSampleReceivedData&& sample) override;

private:
    std::shared_ptr<DeviceImpl> findDevice(const plugin::DeviceDriver* driver) const;
    std::shared_ptr<NodeImpl> findNode(const plugin::NodeDriver* driver) const;
    std::vector<std::shared_ptr<NodeImpl>> allNodes() const;
    std::shared_ptr<NodeImpl> makeNode(const std::shared_ptr<DeviceImpl>& device,
                                       std::shared_ptr<plugin::NodeDriver> driver);

    // Both are called with m_streamMutex held, never with m_mutex (the sink takes m_mutex).
    void startNode(NodeImpl& node);
    void stopNode(NodeImpl& node);
    // The node is gone: stop it, forget its registration, mark the handles disconnected.
    void retireNode(NodeImpl& node);

    void postSample(plugin::NodeDriver* driver, SampleQueue::Sample&& sample);
    void closeDrivers();

    std::vector<std::unique_ptr<plugin::Driver>> m_drivers;
    std::atomic<bool> m_opening {false};

    mutable std::mutex m_mutex; // guards the two lists below
    std::vector<std::shared_ptr<DeviceImpl>> m_devices;
    std::unordered_map<const plugin::NodeDriver*, std::shared_ptr<NodeImpl>> m_nodes;

    std::mutex m_streamMutex; // serialises starting and stopping
    bool m_started = false;
};

} // namespace Zerlane::detail
