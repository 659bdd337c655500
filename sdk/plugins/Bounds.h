#pragma once

#include "Vec3.h"

namespace Zerlane::sim {

// An axis-aligned box around something, in the depth camera's frame.
struct Bounds {
    Vec3 min, max;
};

} // namespace Zerlane::sim
