#pragma once

#include "Vec3.h"

#include <cstdint>

namespace Zerlane::sim {

// What a ray of the simulated scene hit.
struct SceneHit {
    float t = 0.f;            // ray parameter (the hit's z for rays with a z component of 1)
    Vec3 normal;              // unit surface normal
    Vec3 albedo;              // visible colour, linear, 0..1
    float reflectivity = 0.f; // at the ToF illumination wavelength; far above 1 for retro-reflectors
    bool retroReflective = false;
    uint8_t object = 0;       // 0 for the room and its furniture, otherwise the moving object's id
};

} // namespace Zerlane::sim
