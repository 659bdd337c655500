#include "ServerConnector.h"

#include "Zerlane/Exceptions.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Zerlane::detail {

namespace {

using Clock = std::chrono::steady_clock;

class Socket {
public:
    explicit Socket(int fd) : m_fd(fd) {}
    ~Socket()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    int fd() const { return m_fd; }
    int release()
    {
        const int fd = m_fd;
        m_fd = -1;
        return fd;
    }

private:
    int m_fd;
};

// Non-blocking connect, waiting at most until the deadline. Returns 0 or an errno value; on success
// `connected` holds the socket, switched back to blocking mode.
int connectBefore(const addrinfo& address, Clock::time_point deadline, int& connected)
{
    Socket socket(::socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol));
    if (socket.fd() < 0)
        return errno;
    const auto finish = [&]() {
        const int flags = ::fcntl(socket.fd(), F_GETFL);
        ::fcntl(socket.fd(), F_SETFL, flags & ~O_NONBLOCK);
        connected = socket.release();
        return 0;
    };
    if (::connect(socket.fd(), address.ai_addr, address.ai_addrlen) == 0)
        return finish();
    if (errno != EINPROGRESS)
        return errno;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return ETIMEDOUT;
        pollfd entry {socket.fd(), POLLOUT, 0};
        const int ready = ::poll(&entry, 1, static_cast<int>(left));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready < 0)
            return errno;
        if (ready == 0)
            return ETIMEDOUT;
        int error = 0;
        socklen_t length = sizeof error;
        if (::getsockopt(socket.fd(), SOL_SOCKET, SO_ERROR, &error, &length) < 0)
            return errno;
        return error == 0 ? finish() : error;
    }
}

} // namespace

int ServerConnector::connect(const std::string& host, uint16_t port)
{
    const std::string where = host + ":" + std::to_string(port);
    addrinfo hints {};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* addresses = nullptr;
    const int resolved = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &addresses);
    if (resolved != 0)
        throw TransportException("could not reach the Zerlane server at " + where + " (" + ::gai_strerror(resolved) + ")");

    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(CONNECT_TIMEOUT_MS);
    int error = ECONNREFUSED;
    int connected = -1;
    for (addrinfo* address = addresses; address; address = address->ai_next) {
        error = connectBefore(*address, deadline, connected);
        if (error == 0 || error == ETIMEDOUT)
            break;
    }
    ::freeaddrinfo(addresses);
    if (error == 0)
        return connected;
    const std::string why = error == ETIMEDOUT ? "no answer within " + std::to_string(CONNECT_TIMEOUT_MS / 1000) + " s"
                                               : std::string(std::strerror(error));
    throw TransportException("could not reach the Zerlane server at " + where + " (" + why + ")");
}

} // namespace Zerlane::detail
