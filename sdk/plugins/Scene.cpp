#include "Scene.h"

#include "DeskScene.h"
#include "RoomScene.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Zerlane::sim {

Scene::Kind Scene::kindFor(CameraMode mode)
{
    return mode == CAMERA_MODE_CLOSE_RANGE ? Kind::Desk : Kind::Room;
}

std::unique_ptr<Scene> Scene::create(Kind kind, double timeSeconds)
{
    if (kind == Kind::Desk)
        return std::make_unique<DeskScene>(timeSeconds);
    return std::make_unique<RoomScene>(timeSeconds);
}

void Scene::traceRow(uint8_t object, const Vec3& origin, const float* columnRays, float rowRay, int x0, int x1,
                     float* tMax, SceneHit* hits, uint8_t* found) const
{
    for (int x = x0; x < x1; ++x) {
        SceneHit hit;
        if (traceObject(object, origin, {columnRays[x], rowRay, 1.f}, tMax[x], hit)) {
            tMax[x] = hit.t;
            hits[x] = hit;
            found[x] = 1;
        }
    }
}

ScreenRect Scene::projectBounds(const Bounds& bounds, const PinholeCamera& camera)
{
    float minX = std::numeric_limits<float>::max(), minY = minX;
    float maxX = -minX, maxY = -minX;
    for (int corner = 0; corner < 8; ++corner) {
        const Vec3 p{(corner & 1) ? bounds.max.x : bounds.min.x, (corner & 2) ? bounds.max.y : bounds.min.y,
                     (corner & 4) ? bounds.max.z : bounds.min.z};
        float px = 0.f, py = 0.f;
        if (!camera.project(p, px, py))
            return {0, 0, camera.width, camera.height}; // reaches behind the camera: everything
        minX = std::min(minX, px);
        maxX = std::max(maxX, px);
        minY = std::min(minY, py);
        maxY = std::max(maxY, py);
    }
    ScreenRect rect;
    rect.x0 = std::clamp(int(std::floor(minX)) - 1, 0, camera.width);
    rect.y0 = std::clamp(int(std::floor(minY)) - 1, 0, camera.height);
    rect.x1 = std::clamp(int(std::ceil(maxX)) + 2, 0, camera.width);
    rect.y1 = std::clamp(int(std::ceil(maxY)) + 2, 0, camera.height);
    return rect;
}

std::vector<ScreenRect> Scene::rectsOf(const std::vector<Bounds>& bounds, const PinholeCamera& camera)
{
    std::vector<ScreenRect> rects;
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        ScreenRect rect = projectBounds(bounds[i], camera);
        rect.object = uint8_t(1 + i);
        if (!rect.isEmpty())
            rects.push_back(rect);
    }
    return rects;
}

} // namespace Zerlane::sim
