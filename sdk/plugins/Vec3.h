#pragma once

#include <cmath>

namespace Zerlane::sim {

// A point or direction in the depth camera's frame: x right, y down, z forward, metres.
struct Vec3 {
    float x = 0.f, y = 0.f, z = 0.f;

    Vec3 operator+(const Vec3& o) const { return {x + o.x, y + o.y, z + o.z}; }
    Vec3 operator-(const Vec3& o) const { return {x - o.x, y - o.y, z - o.z}; }
    Vec3 operator*(float s) const { return {x * s, y * s, z * s}; }
    Vec3 operator*(const Vec3& o) const { return {x * o.x, y * o.y, z * o.z}; }
    float dot(const Vec3& o) const { return x * o.x + y * o.y + z * o.z; }
    float length() const { return std::sqrt(dot(*this)); }
    Vec3 normalized() const
    {
        const float l = length();
        return l > 0.f ? *this * (1.f / l) : *this;
    }
};

} // namespace Zerlane::sim
