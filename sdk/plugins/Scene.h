#pragma once

#include "PinholeCamera.h"
#include "SceneHit.h"
#include "ScreenRect.h"
#include "Vec3.h"

#include <cstdint>
#include <vector>

namespace Zerlane::sim {

// The simulated camera's world: a furnished room 5 m wide, 3 m high and 6 m deep, the camera 1.2 m above
// the floor near the back wall, and three moving objects (a swinging pendulum ball, a turning box that
// slides back and forth, a person walking across the far end). Moving objects are a function of time
// only, so two renderings of the same time are identical.
class Scene {
public:
    static constexpr uint8_t Room = 0;
    static constexpr uint8_t Pendulum = 1;
    static constexpr uint8_t Turntable = 2;
    static constexpr uint8_t Walker = 3;

    // Poses of the moving objects at that time (seconds; any origin).
    explicit Scene(double timeSeconds);

    // The room and its furniture, which never move: callers cache these hits per pixel.
    static bool traceStatic(const Vec3& origin, const Vec3& direction, SceneHit& hit);
    // One moving object, if it is closer than tMax along the ray.
    bool traceObject(uint8_t object, const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const;
    // Pixels of that camera that may see a moving object (conservative, one rectangle per object, tagged
    // with it): outside its rectangle a pixel cannot see that object.
    std::vector<ScreenRect> movingRects(const PinholeCamera& camera) const;

private:
    struct Bounds {
        Vec3 min, max;
    };

    bool hitPendulum(const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const;
    bool hitTurntable(const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const;
    bool hitWalker(const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const;
    std::vector<Bounds> movingBounds() const;
    static ScreenRect projectBounds(const Bounds& bounds, const PinholeCamera& camera);

    Vec3 m_pendulumCenter;
    Vec3 m_boxCenter;
    float m_boxCos = 1.f, m_boxSin = 0.f;
    Vec3 m_walkerFoot; // centre of the walker's footprint on the floor
    float m_headBob = 0.f;
};

} // namespace Zerlane::sim
