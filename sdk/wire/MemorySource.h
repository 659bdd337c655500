#pragma once

#include "ByteSource.h"

#include <cstdint>
#include <cstring>

#include "Zerlane/Exceptions.h"

namespace Zerlane::wire {

// Bytes already in memory (tests, fuzzing). Reading past the end is a truncated message.
class MemorySource : public ByteSource {
public:
    MemorySource(const uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    void read(void* data, std::size_t size) override
    {
        if (size > m_size - m_offset)
            throw TransportException("the message ends early");
        std::memcpy(data, m_data + m_offset, size);
        m_offset += size;
    }

    bool atEnd() const { return m_offset == m_size; }

private:
    const uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_offset = 0;
};

} // namespace Zerlane::wire
