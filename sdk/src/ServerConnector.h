#pragma once

#include <cstdint>
#include <string>

namespace Zerlane::detail {

// The client side of server mode, as far as it goes: it finds out whether a server listens at
// host:port. The protocol itself is not implemented yet, so a successful connection is reported as
// such and refused, rather than pretending to work.
class ServerConnector {
public:
    static constexpr int CONNECT_TIMEOUT_MS = 3000;

    // Always throws TransportException: "could not reach ..." or "connected ..., but ...".
    [[noreturn]] static void connect(const std::string& host, uint16_t port);

private:
    // Returns an empty string on success, else why the connection failed.
    static std::string tryConnect(const std::string& host, uint16_t port);
};

} // namespace Zerlane::detail
