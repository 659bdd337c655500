#pragma once

#include "ServerConnection.h"

#include "Zerlane/Context.h"
#include "Zerlane/plugin/Driver.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace Zerlane::detail {

class RemoteDeviceDriver;
class RemoteNodeDriver;

// The server's cameras presented to the client's runtime as one driver: the devices of the welcome at
// open(), then arrivals, departures, property changes and samples as the server reports them.
class RemoteDriver : public plugin::Driver, public ServerConnection::Receiver {
public:
    using ClientEvent = std::function<void(bool connected, const Context::ClientData_p& client)>;

    RemoteDriver(std::shared_ptr<ServerConnection> connection, ClientEvent clientEvent);
    ~RemoteDriver() override;

    std::string name() const override { return "server"; }
    void open(plugin::DriverListener* listener) override;
    void close() override;

    void notice(const wire::Notice& notice) override;
    void sample(uint32_t node, wire::SampleCodec::Sample&& sample) override;
    void lost(const std::string& message) override;

private:
    std::shared_ptr<const plugin::TypeSpec> typeFor(const wire::TypeSpec& spec);
    std::shared_ptr<RemoteNodeDriver> makeNode(const wire::NodeInfo& info);
    void addDevice(const wire::DeviceInfo& info);
    void removeDevice(uint32_t id);
    void addNode(uint32_t device, const wire::NodeInfo& info);
    void removeNode(uint32_t id);
    void propertyChanged(uint32_t target, const std::string& name);
    std::shared_ptr<RemoteDeviceDriver> deviceOfNode(uint32_t node) const;

    std::shared_ptr<ServerConnection> m_connection;
    ClientEvent m_clientEvent;
    plugin::DriverListener* m_listener = nullptr;

    mutable std::mutex m_mutex; // guards the maps below
    std::map<std::string, std::shared_ptr<const plugin::TypeSpec>> m_types;
    std::map<uint32_t, std::shared_ptr<RemoteDeviceDriver>> m_devices;
    std::map<uint32_t, std::shared_ptr<RemoteNodeDriver>> m_nodes;
};

} // namespace Zerlane::detail
