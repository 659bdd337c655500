#pragma once

#include "FastRandom.h"

#include <array>
#include <cstdint>

namespace Zerlane::sim {

// Standard normal deviates by table look-up: the quantiles of 4096 equally likely bins, so one random
// number and one load give a sample (tails beyond about 3.5 sigma are cut, which a sensor does too).
class GaussianTable {
public:
    static const GaussianTable& instance();

    float sample(FastRandom& random) const { return m_values[random.next() >> 20]; }

private:
    GaussianTable();
    std::array<float, 4096> m_values{};
};

} // namespace Zerlane::sim
