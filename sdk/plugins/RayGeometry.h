#pragma once

#include "SceneHit.h"
#include "Vec3.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

// Ray intersections shared by the simulated scenes. Rays are origin + t * direction; hits closer than MinT
// are ignored so that a ray leaving a surface does not hit it again.
namespace Zerlane::sim::ray {

constexpr float MinT = 1e-4f;

inline bool sphere(const Vec3& origin, const Vec3& direction, const Vec3& center, float radius, float& t)
{
    const Vec3 oc = origin - center;
    const float a = direction.dot(direction);
    const float b = oc.dot(direction);
    const float c = oc.dot(oc) - radius * radius;
    const float disc = b * b - a * c;
    if (disc < 0.f)
        return false;
    t = (-b - std::sqrt(disc)) / a;
    return t > MinT;
}

// Entry of a ray into an axis-aligned box seen from outside; axis is the face's axis, sign its side.
// Moving boxes are traced per pixel: one slab per axis, without loops over arrays.
inline bool box(const Vec3& origin, const Vec3& direction, const Vec3& lo, const Vec3& hi, float& t, int& axis,
                float& sign)
{
    float tNear = -std::numeric_limits<float>::max();
    float tFar = std::numeric_limits<float>::max();
    auto slab = [&](float o, float d, float l, float h, int i) {
        if (std::fabs(d) < 1e-12f)
            return o >= l && o <= h;
        const float t0 = (l - o) / d;
        const float t1 = (h - o) / d;
        const float enter = std::min(t0, t1);
        if (enter > tNear) {
            tNear = enter;
            axis = i;
            sign = t0 > t1 ? 1.f : -1.f;
        }
        tFar = std::min(tFar, std::max(t0, t1));
        return tNear <= tFar;
    };
    if (!slab(origin.x, direction.x, lo.x, hi.x, 0) || !slab(origin.y, direction.y, lo.y, hi.y, 1) ||
        !slab(origin.z, direction.z, lo.z, hi.z, 2))
        return false;
    t = tNear;
    return t > MinT;
}

inline Vec3 axisNormal(int axis, float sign)
{
    Vec3 n;
    (axis == 0 ? n.x : axis == 1 ? n.y : n.z) = sign;
    return n;
}

inline Vec3 rotateY(const Vec3& v, float c, float s)
{
    return {c * v.x + s * v.z, v.y, -s * v.x + c * v.z};
}

inline void setSurface(SceneHit& hit, Vec3 albedo, float reflectivity, uint8_t object)
{
    hit.albedo = albedo;
    hit.reflectivity = reflectivity;
    hit.retroReflective = false;
    hit.object = object;
}

} // namespace Zerlane::sim::ray
