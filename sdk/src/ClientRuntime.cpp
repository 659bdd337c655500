#include "ClientRuntime.h"

#include "DeviceImpl.h"
#include "NodeImpl.h"
#include "RemoteDeviceDriver.h"
#include "RemoteDriver.h"
#include "RemoteNodeDriver.h"
#include "RemoteRequest.h"
#include "ServerConnection.h"

#include "Zerlane/Exceptions.h"

#include <chrono>
#include <thread>

namespace Zerlane::detail {

namespace {

// How often a control request asks again while another client holds control.
constexpr auto kControlRetryInterval = std::chrono::milliseconds(10);

} // namespace

ClientRuntime::ClientRuntime(std::shared_ptr<ServerConnection> connection) : m_connection(std::move(connection)) {}

void ClientRuntime::connect()
{
    std::vector<std::unique_ptr<plugin::Driver>> drivers;
    drivers.push_back(std::make_unique<RemoteDriver>(m_connection, [this](bool connected,
                                                                          const Context::ClientData_p& client) {
        if (connected)
            postClientConnected(client);
        else
            postClientDisconnected(client);
    }));
    open(std::move(drivers));
}

void ClientRuntime::ensureUsable() const
{
    m_connection->ensureOpen();
}

uint32_t ClientRuntime::remoteId(InterfaceImpl& target)
{
    if (target.isDevice())
        return static_cast<const RemoteDeviceDriver&>(static_cast<DeviceImpl&>(target).lastDriver()).id();
    return static_cast<const RemoteNodeDriver&>(static_cast<NodeImpl&>(target).lastDriver()).id();
}

std::vector<Device> ClientRuntime::devices() const
{
    ensureUsable();
    return StandaloneRuntime::devices();
}

void ClientRuntime::registerNode(NodeImpl& node)
{
    ensureUsable();
    StandaloneRuntime::registerNode(node);
}

void ClientRuntime::unregisterNode(NodeImpl& node)
{
    ensureUsable();
    StandaloneRuntime::unregisterNode(node);
}

void ClientRuntime::requestControl(InterfaceImpl& target, int32_t timeoutMs)
{
    ensureUsable();
    target.ensureConnected();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(std::max(timeoutMs, 0));
    for (;;) {
        try {
            RemoteRequest::send(*m_connection, wire::OP_REQUEST_CONTROL, remoteId(target));
            break;
        } catch (const TimeoutException&) {
            if (std::chrono::steady_clock::now() >= deadline)
                throw;
        }
        std::this_thread::sleep_for(kControlRetryInterval);
    }
    target.setControlled(true);
}

void ClientRuntime::releaseControl(InterfaceImpl& target)
{
    ensureUsable();
    RemoteRequest::send(*m_connection, wire::OP_RELEASE_CONTROL, remoteId(target));
    target.setControlled(false);
}

void ClientRuntime::startNodes()
{
    ensureUsable();
    StandaloneRuntime::startNodes();
}

void ClientRuntime::stopNodes()
{
    ensureUsable();
    StandaloneRuntime::stopNodes();
}

} // namespace Zerlane::detail
