#pragma once

#include <cstdint>

namespace Zerlane::sim {

// xorshift32: a few cycles per number, good enough for sensor noise.
class FastRandom {
public:
    explicit FastRandom(uint32_t seed = 1) { reseed(seed); }

    void reseed(uint32_t seed) { m_state = seed ? seed : 0x6d2b79f5u; }

    uint32_t next()
    {
        uint32_t x = m_state;
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        m_state = x;
        return x;
    }

    // Uniform in [0, 1).
    float uniform() { return float(next() >> 8) * (1.f / 16777216.f); }

private:
    uint32_t m_state = 1;
};

} // namespace Zerlane::sim
