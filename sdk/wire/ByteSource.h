#pragma once

#include <cstddef>

namespace Zerlane::wire {

// Where a decoder reads from: a socket, or memory in tests and fuzzing.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    // Fills all `size` bytes or throws TransportException (end of data, error, time-out).
    virtual void read(void* data, std::size_t size) = 0;
};

} // namespace Zerlane::wire
