#pragma once

#include "Vec3.h"

#include <cmath>

namespace Zerlane::sim {

// Intrinsics of an ideal pinhole camera with square pixels and the principal point at the image centre.
// Pixel (column, row) looks along the ray (rayX(column), rayY(row), 1), so the ray parameter of a hit is
// its z. Pixel centres are at half-integer positions.
struct PinholeCamera {
    int width = 0;
    int height = 0;
    float focal = 1.f; // pixels
    Vec3 origin;       // position in the depth camera's frame

    static constexpr float DepthHorizontalFovDegrees = 70.f;
    static constexpr float ColorHorizontalFovDegrees = 65.f;
    // The colour camera sits this far to the right of the depth camera (translation only).
    static constexpr float ColorBaseline = 0.025f;

    static PinholeCamera withHorizontalFov(int width, int height, float fovDegrees, Vec3 origin = {})
    {
        PinholeCamera camera;
        camera.width = width;
        camera.height = height;
        camera.focal = float((width * 0.5) / std::tan(fovDegrees * 0.5 * M_PI / 180.0));
        camera.origin = origin;
        return camera;
    }
    static PinholeCamera depth(int width, int height)
    {
        return withHorizontalFov(width, height, DepthHorizontalFovDegrees);
    }
    static PinholeCamera color(int width, int height)
    {
        return withHorizontalFov(width, height, ColorHorizontalFovDegrees, {ColorBaseline, 0.f, 0.f});
    }

    float centerX() const { return width * 0.5f; }
    float centerY() const { return height * 0.5f; }
    float rayX(int column) const { return (float(column) + 0.5f - centerX()) / focal; }
    float rayY(int row) const { return (float(row) + 0.5f - centerY()) / focal; }

    // Back-projection of a depth (z, metres) seen by pixel (column, row).
    Vec3 backProject(int column, int row, float z) const { return {z * rayX(column), z * rayY(row), z}; }

    // Continuous pixel position of a point of the depth camera's frame; false behind the camera.
    bool project(const Vec3& point, float& px, float& py) const
    {
        const Vec3 p = point - origin;
        if (p.z <= 1e-4f)
            return false;
        px = focal * p.x / p.z + centerX();
        py = focal * p.y / p.z + centerY();
        return true;
    }
};

} // namespace Zerlane::sim
