#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace Zerlane::wire {

// Reuses the large buffers samples are received into: a fresh 10 MB allocation per sample costs more in
// page faults than the copy from the socket. A buffer goes back to the pool when the last map pointer
// into it is released, also after the pool itself is gone.
class BufferPool {
public:
    explicit BufferPool(std::size_t keep = 6);

    std::shared_ptr<uint8_t> acquire(std::size_t size);

private:
    struct Free {
        std::size_t capacity;
        std::unique_ptr<uint8_t[]> data;
    };
    struct State {
        std::mutex mutex;
        std::vector<Free> free;
        std::size_t keep;
    };
    std::shared_ptr<State> m_state;
};

} // namespace Zerlane::wire
