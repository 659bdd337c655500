#include "BufferPool.h"

#include <algorithm>

namespace Zerlane::wire {

BufferPool::BufferPool(std::size_t keep) : m_state(std::make_shared<State>())
{
    m_state->keep = keep;
}

std::shared_ptr<uint8_t> BufferPool::acquire(std::size_t size)
{
    std::unique_ptr<uint8_t[]> data;
    std::size_t capacity = 0;
    {
        std::lock_guard<std::mutex> lock(m_state->mutex);
        auto& free = m_state->free;
        auto it = std::find_if(free.begin(), free.end(), [size](const Free& f) { return f.capacity >= size; });
        if (it != free.end()) {
            data = std::move(it->data);
            capacity = it->capacity;
            free.erase(it);
        }
    }
    if (!data) {
        capacity = std::max<std::size_t>(size, 1);
        data.reset(new uint8_t[capacity]);
    }
    uint8_t* raw = data.release();
    std::weak_ptr<State> pool = m_state;
    return std::shared_ptr<uint8_t>(raw, [pool, capacity](uint8_t* p) {
        std::unique_ptr<uint8_t[]> owned(p);
        if (std::shared_ptr<State> state = pool.lock()) {
            std::lock_guard<std::mutex> lock(state->mutex);
            if (state->free.size() < state->keep)
                state->free.push_back(Free {capacity, std::move(owned)});
        }
    });
}

} // namespace Zerlane::wire
