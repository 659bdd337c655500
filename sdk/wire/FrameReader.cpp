#include "FrameReader.h"

#include "WireLimits.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::wire {

uint32_t FrameReader::decodeLength(const uint8_t bytes[4])
{
    return uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 | uint32_t(bytes[3]) << 24;
}

uint32_t FrameReader::readLength()
{
    uint8_t bytes[4];
    m_source.read(bytes, sizeof bytes);
    return decodeLength(bytes);
}

Envelope FrameReader::readEnvelope()
{
    const uint32_t length = readLength();
    if (length == 0)
        throw TransportException("empty message");
    if (length > WireLimits::MAX_ENVELOPE_BYTES)
        throw TransportException("message of " + std::to_string(length) + " bytes is above the limit of "
                                 + std::to_string(WireLimits::MAX_ENVELOPE_BYTES));
    m_buffer.resize(length);
    m_source.read(m_buffer.data(), length);
    Envelope envelope;
    if (!envelope.ParseFromString(m_buffer))
        throw TransportException("malformed message");
    if (envelope.body_case() == Envelope::BODY_NOT_SET)
        throw TransportException("message of unknown type");
    return envelope;
}

void FrameReader::readBlock(void* data, uint32_t declared)
{
    const uint32_t length = readLength();
    if (length != declared)
        throw TransportException("sample block of " + std::to_string(length) + " bytes where the header declared "
                                 + std::to_string(declared));
    m_source.read(data, length);
}

} // namespace Zerlane::wire
