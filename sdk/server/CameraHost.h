#pragma once

#include "SampleCodec.h"
#include "zerlane_wire.pb.h"

#include "Zerlane/plugin/Driver.h"
#include "Zerlane/plugin/SampleSink.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace Zerlane::server {

class ClientSession;

// The device plug-ins as the server hosts them for all its clients: it numbers devices and nodes for
// the wire, arbitrates control between clients (per device and per node), streams a node while any
// client streams it, and executes the clients' requests.
class CameraHost : public plugin::DriverListener, public plugin::SampleSink {
public:
    // Sends a notice to every admitted client except `except` (may be null).
    using Broadcast = std::function<void(const wire::Notice& notice, const ClientSession* except)>;

    explicit CameraHost(Broadcast broadcast);
    ~CameraHost() override;

    void open(std::vector<std::unique_ptr<plugin::Driver>> drivers);
    void close();

    std::vector<wire::DeviceInfo> devices() const;
    wire::Reply handle(ClientSession& session, const wire::Request& request);
    // The client has gone: its control and its streams end at once.
    void release(ClientSession& session);
    // Number of clients streaming the node.
    std::size_t streamCount(uint32_t node) const;

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
    struct DeviceEntry {
        std::shared_ptr<plugin::DeviceDriver> driver;
        std::vector<uint32_t> nodes;
    };
    struct NodeEntry {
        std::shared_ptr<plugin::NodeDriver> driver;
        uint32_t device = 0;
        std::vector<std::shared_ptr<ClientSession>> streams; // clients streaming it
    };
    struct Target {
        uint32_t id = 0;
        std::shared_ptr<plugin::DeviceDriver> device; // set for a device and for a node (its device)
        std::shared_ptr<plugin::NodeDriver> node;     // set for a node
        uint32_t deviceId = 0;
        std::string description;
    };

    Target target(uint32_t id) const;
    NodeEntry& nodeEntry(uint32_t id);
    static wire::NodeInfo describe(uint32_t id, const plugin::NodeDriver& node);
    wire::DeviceInfo describe(uint32_t id) const;
    uint32_t registerNodeLocked(uint32_t device, const std::shared_ptr<plugin::NodeDriver>& node);
    bool hasControlLocked(const ClientSession& session, const Target& target) const;

    PropertyValue getProperty(const Target& target, const std::string& name);
    void setProperty(ClientSession& session, const Target& target, const std::string& name, const PropertyValue& value);
    void requestControl(ClientSession& session, const Target& target);
    void releaseControl(ClientSession& session, const Target& target);
    void startStream(ClientSession& session, const Target& target);
    void stopStream(ClientSession& session, const Target& target);
    void deliver(plugin::NodeDriver* node, wire::SampleCodec::Sample&& sample);
    // Drops the nodes' streams and stops those that were streaming (they are gone or closing).
    void retireNodes(const std::vector<std::pair<uint32_t, NodeEntry>>& nodes);

    Broadcast m_broadcast;
    std::vector<std::unique_ptr<plugin::Driver>> m_drivers;

    std::mutex m_streamMutex; // serialises starting and stopping nodes (never held by the sample path)
    mutable std::mutex m_mutex; // guards everything below
    uint32_t m_nextId = 1;
    std::map<uint32_t, DeviceEntry> m_devices;
    std::map<uint32_t, NodeEntry> m_nodes;
    std::map<const plugin::DeviceDriver*, uint32_t> m_deviceIds;
    std::map<const plugin::NodeDriver*, uint32_t> m_nodeIds;
    std::map<uint32_t, const ClientSession*> m_controller; // device or node id -> client holding control
};

} // namespace Zerlane::server
