#pragma once

#include <cstdint>
#include <cstddef>

namespace Zerlane::wire {

// The protocol's constants. Every length and count read from the wire is checked against these before
// anything is allocated for it.
struct WireLimits {
    static constexpr uint32_t MAGIC = 0x5a524c4e; // "ZRLN"
    static constexpr uint32_t VERSION = 1;

    // One envelope (request, reply, notice, sample header). The largest real one is a welcome listing
    // a few devices with their property declarations: a few kilobytes.
    static constexpr uint32_t MAX_ENVELOPE_BYTES = 1u << 20;
    // One map of a sample: 1280 x 720 x 3 colour bytes, 640 x 480 floating-point vertices and the
    // three-plane layouts all fit with room to spare.
    static constexpr uint32_t MAX_BLOCK_BYTES = 32u << 20;
    static constexpr uint32_t MAX_BLOCKS = 8;
    static constexpr uint64_t MAX_SAMPLE_BYTES = 64u << 20;
    // Lists inside envelopes.
    static constexpr int MAX_DEVICES = 256;
    static constexpr int MAX_NODES = 64;
    static constexpr int MAX_PROPERTIES = 1024;
    static constexpr int MAX_CONFIGURATIONS = 4096;
};

} // namespace Zerlane::wire
