#pragma once

#include "ByteSource.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <sys/uio.h>
#include <vector>

namespace Zerlane::wire {

// A connected TCP socket read and written with plain blocking calls: one thread may read while another
// writes. Reads can be given a deadline (the handshake); shutdown() from any thread ends both.
class SocketStream : public ByteSource {
public:
    explicit SocketStream(int fd);
    ~SocketStream() override;

    SocketStream(const SocketStream&) = delete;
    SocketStream& operator=(const SocketStream&) = delete;

    void read(void* data, std::size_t size) override;
    // Until clearDeadline(), a read that has not completed by then throws TransportException.
    void setDeadline(std::chrono::steady_clock::time_point deadline);
    void clearDeadline();

    // Writes every byte of every buffer or throws TransportException.
    void write(std::vector<iovec> buffers);
    void write(const std::string& bytes);

    void shutdown() noexcept;
    int fd() const { return m_fd; }

private:
    int m_fd;
    bool m_hasDeadline = false;
    std::chrono::steady_clock::time_point m_deadline;
};

} // namespace Zerlane::wire
