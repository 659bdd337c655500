#pragma once

#include "SampleCodec.h"
#include "zerlane_wire.pb.h"

#include "Zerlane/plugin/NodeDriver.h"
#include "Zerlane/plugin/SampleSink.h"

#include <atomic>
#include <memory>

namespace Zerlane::detail {

class ServerConnection;

// A stream source of a server camera. start() and stop() ask the server to stream it to this client;
// the samples arrive on the connection's reader thread and go to the sink given to start().
class RemoteNodeDriver : public plugin::NodeDriver {
public:
    RemoteNodeDriver(std::shared_ptr<ServerConnection> connection, const wire::NodeInfo& info,
                     std::shared_ptr<const plugin::TypeSpec> type);

    uint32_t id() const { return m_id; }
    // The server removed it: stop() no longer asks the server (it may run on the reader thread).
    void markGone() { m_gone = true; }
    // Runs on the reader thread.
    void deliver(wire::SampleCodec::Sample&& sample);

    NodeKind kind() const override;
    std::shared_ptr<const plugin::TypeSpec> type() const override;
    std::string serialNumber() const override;
    int32_t vid() const override;
    int32_t pid() const override;
    int32_t revision() const override;
    int32_t mediaInterface() const override;
    UnsupportedNode::Reason unsupportedReason() const override;
    PropertyValue getProperty(const std::string& name) const override;
    void setProperty(const std::string& name, const PropertyValue& value) override;
    std::vector<PropertyValue> configurations() const override;
    PropertyValue configuration() const override;
    void setConfiguration(const PropertyValue& configuration) override;
    float range() const override;
    void start(plugin::SampleSink* sink) override;
    void stop() override;

private:
    std::shared_ptr<ServerConnection> m_connection;
    uint32_t m_id;
    NodeKind m_kind;
    std::string m_serial;
    int32_t m_vid, m_pid, m_revision, m_mediaInterface;
    UnsupportedNode::Reason m_reason;
    std::shared_ptr<const plugin::TypeSpec> m_type;
    std::atomic<plugin::SampleSink*> m_sink {nullptr};
    std::atomic<bool> m_gone {false};
};

} // namespace Zerlane::detail
