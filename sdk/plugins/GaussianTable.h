#pragma once

#include "FastRandom.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Zerlane::sim {

// Standard normal deviates by table look-up: the quantiles of 4096 equally likely bins, so one random
// number and one load give a sample (tails beyond about 3.5 sigma are cut, which a sensor does too).
// For whole rows of pixels there is a long shuffled sequence of those quantiles: a run starting at a random
// place gives a row of independent samples with one random number and contiguous loads.
class GaussianTable {
public:
    static constexpr int MaxRun = 2048;

    static const GaussianTable& instance();

    float sample(FastRandom& random) const { return m_values[random.next() >> 20]; }
    // MaxRun consecutive samples of the sequence, from a random start.
    const float* run(FastRandom& random) const { return m_sequence.data() + (random.next() >> 16); }

private:
    static constexpr std::size_t SequenceStarts = 1u << 16;

    GaussianTable();
    void buildSequence();

    std::array<float, 4096> m_values{};
    std::vector<float> m_sequence; // SequenceStarts + MaxRun samples, the tail repeating the head
};

} // namespace Zerlane::sim
