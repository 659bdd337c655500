#pragma once

#include <cstddef>
#include <cstdint>

// FNV-1a over raw bytes: a fingerprint of rendered maps and pictures, to tell that an output stayed the same
// bit for bit.
inline uint64_t checksum(const void* data, std::size_t bytes, uint64_t hash = 0xcbf29ce484222325ull)
{
    const auto* p = static_cast<const uint8_t*>(data);
    for (std::size_t i = 0; i < bytes; ++i) {
        hash ^= p[i];
        hash *= 0x100000001b3ull;
    }
    return hash;
}
