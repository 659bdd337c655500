#pragma once

#include "ByteSource.h"
#include "zerlane_wire.pb.h"

#include <cstdint>
#include <string>

namespace Zerlane::wire {

// Reads framed messages: a 4-byte little-endian length, then the envelope; a sample header's blocks
// follow as length-prefixed raw bytes. Lengths are checked against WireLimits before any allocation;
// every violation throws TransportException naming it.
class FrameReader {
public:
    explicit FrameReader(ByteSource& source) : m_source(source) {}

    Envelope readEnvelope();
    // Reads one block's length prefix, which must equal `declared`, then the bytes into `data`.
    void readBlock(void* data, uint32_t declared);

    static uint32_t decodeLength(const uint8_t bytes[4]);

private:
    uint32_t readLength();

    ByteSource& m_source;
    std::string m_buffer;
};

} // namespace Zerlane::wire
