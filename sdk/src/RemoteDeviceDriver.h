#pragma once

#include "zerlane_wire.pb.h"

#include "Zerlane/plugin/DeviceDriver.h"

#include <memory>
#include <mutex>

namespace Zerlane::detail {

class RemoteNodeDriver;
class ServerConnection;

// A camera of the server, as the client's runtime sees it: its facts arrive with it, everything else is
// a request. After the connection is lost every method throws TransportException.
class RemoteDeviceDriver : public plugin::DeviceDriver {
public:
    RemoteDeviceDriver(std::shared_ptr<ServerConnection> connection, const wire::DeviceInfo& info,
                       std::shared_ptr<const plugin::TypeSpec> type);

    uint32_t id() const { return m_id; }

    Device::Model model() const override;
    std::string serialNumber() const override;
    int32_t usbBackendVersion() const override;
    int32_t tofControllerVersion() const override;
    bool overheating() const override;
    bool overheated() const override;
    std::shared_ptr<const plugin::TypeSpec> type() const override;
    PropertyValue getProperty(const std::string& name) const override;
    void setProperty(const std::string& name, const PropertyValue& value) override;
    std::vector<std::shared_ptr<plugin::NodeDriver>> nodes() const override;

    std::vector<std::shared_ptr<RemoteNodeDriver>> remoteNodes() const;
    void addNode(std::shared_ptr<RemoteNodeDriver> node);
    std::shared_ptr<RemoteNodeDriver> takeNode(uint32_t id);

private:
    std::shared_ptr<ServerConnection> m_connection;
    uint32_t m_id;
    Device::Model m_model;
    std::string m_serial;
    int32_t m_usbBackendVersion;
    int32_t m_tofControllerVersion;
    std::shared_ptr<const plugin::TypeSpec> m_type;
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<RemoteNodeDriver>> m_nodes;
};

} // namespace Zerlane::detail
