#include "FrameWriter.h"

namespace Zerlane::wire {

void FrameWriter::encodeLength(uint32_t length, uint8_t bytes[4])
{
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<uint8_t>(length >> (8 * i));
}

std::string FrameWriter::frame(const Envelope& envelope)
{
    const std::size_t size = envelope.ByteSizeLong();
    std::string bytes(4 + size, '\0');
    encodeLength(static_cast<uint32_t>(size), reinterpret_cast<uint8_t*>(bytes.data()));
    envelope.SerializeWithCachedSizesToArray(reinterpret_cast<uint8_t*>(bytes.data()) + 4);
    return bytes;
}

} // namespace Zerlane::wire
