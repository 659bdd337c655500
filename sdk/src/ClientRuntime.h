#pragma once

#include "StandaloneRuntime.h"

#include <memory>

namespace Zerlane::detail {

class ServerConnection;

// A context connected to a Zerlane server. It is the in-process runtime driving one driver, the
// server's cameras; what must be arbitrated between clients (control) is asked of the server, and once
// the connection is lost every operation throws TransportException.
class ClientRuntime final : public StandaloneRuntime {
public:
    explicit ClientRuntime(std::shared_ptr<ServerConnection> connection);

    // Presents the devices the server listed and starts receiving.
    void connect();

    std::vector<Device> devices() const override;
    void registerNode(NodeImpl& node) override;
    void unregisterNode(NodeImpl& node) override;
    void requestControl(InterfaceImpl& target, int32_t timeoutMs) override;
    void releaseControl(InterfaceImpl& target) override;
    void startNodes() override;
    void stopNodes() override;

protected:
    void ensureUsable() const override;

private:
    static uint32_t remoteId(InterfaceImpl& target);

    std::shared_ptr<ServerConnection> m_connection;
};

} // namespace Zerlane::detail
