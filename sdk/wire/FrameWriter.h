#pragma once

#include "zerlane_wire.pb.h"

#include <cstdint>
#include <string>

namespace Zerlane::wire {

// Encodes messages the way FrameReader reads them.
class FrameWriter {
public:
    // The length prefix and the envelope.
    static std::string frame(const Envelope& envelope);
    static void encodeLength(uint32_t length, uint8_t bytes[4]);
};

} // namespace Zerlane::wire
