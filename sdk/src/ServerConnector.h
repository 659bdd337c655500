#pragma once

#include <cstdint>
#include <string>

namespace Zerlane::detail {

// Opens the TCP connection to a Zerlane server, giving up after CONNECT_TIMEOUT_MS.
class ServerConnector {
public:
    static constexpr int CONNECT_TIMEOUT_MS = 3000;

    // Returns the connected socket, or throws TransportException saying that the server at host:port
    // could not be reached and why.
    static int connect(const std::string& host, uint16_t port);
};

} // namespace Zerlane::detail
