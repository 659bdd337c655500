#include "SocketStream.h"

#include "Zerlane/Exceptions.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Zerlane::wire {

namespace {

[[noreturn]] void fail(const char* what, int error)
{
    throw TransportException(std::string(what) + ": " + std::strerror(error));
}

} // namespace

SocketStream::SocketStream(int fd) : m_fd(fd)
{
    const int on = 1;
    ::setsockopt(m_fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

SocketStream::~SocketStream()
{
    ::close(m_fd);
}

void SocketStream::setDeadline(std::chrono::steady_clock::time_point deadline)
{
    m_hasDeadline = true;
    m_deadline = deadline;
}

void SocketStream::clearDeadline()
{
    m_hasDeadline = false;
}

void SocketStream::read(void* data, std::size_t size)
{
    auto* out = static_cast<uint8_t*>(data);
    while (size > 0) {
        if (m_hasDeadline) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline
                                                                                    - std::chrono::steady_clock::now());
            pollfd entry {m_fd, POLLIN, 0};
            const int ready = left.count() > 0 ? ::poll(&entry, 1, static_cast<int>(left.count())) : 0;
            if (ready < 0 && errno == EINTR)
                continue;
            if (ready < 0)
                fail("waiting for data failed", errno);
            if (ready == 0)
                throw TransportException("nothing received in time");
        }
        const ssize_t got = ::recv(m_fd, out, size, 0);
        if (got == 0)
            throw TransportException("the connection was closed");
        if (got < 0) {
            if (errno == EINTR)
                continue;
            fail("receiving failed", errno);
        }
        out += got;
        size -= static_cast<std::size_t>(got);
    }
}

void SocketStream::write(std::vector<iovec> buffers)
{
    std::size_t first = 0;
    while (first < buffers.size()) {
        msghdr message {};
        message.msg_iov = buffers.data() + first;
        message.msg_iovlen = std::min<std::size_t>(buffers.size() - first, IOV_MAX);
        const ssize_t sent = ::sendmsg(m_fd, &message, MSG_NOSIGNAL);
        if (sent < 0) {
            if (errno == EINTR)
                continue;
            fail("sending failed", errno);
        }
        auto left = static_cast<std::size_t>(sent);
        while (first < buffers.size() && left >= buffers[first].iov_len) {
            left -= buffers[first].iov_len;
            ++first;
        }
        if (first < buffers.size()) {
            buffers[first].iov_base = static_cast<uint8_t*>(buffers[first].iov_base) + left;
            buffers[first].iov_len -= left;
        }
    }
}

void SocketStream::write(const std::string& bytes)
{
    write({iovec {const_cast<char*>(bytes.data()), bytes.size()}});
}

void SocketStream::shutdown() noexcept
{
    ::shutdown(m_fd, SHUT_RDWR);
}

} // namespace Zerlane::wire
