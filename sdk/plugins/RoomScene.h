#pragma once

#include "Scene.h"

namespace Zerlane::sim {

// The long-range mode's scene: a furnished room 5 m wide, 3 m high and 6 m deep, the camera 1.2 m above the
// floor near the back wall, and three moving objects (a swinging pendulum ball, a turning box that slides
// back and forth, a person walking across the far end).
class RoomScene : public Scene {
public:
    static constexpr uint8_t Room = 0;
    static constexpr uint8_t Pendulum = 1;
    static constexpr uint8_t Turntable = 2;
    static constexpr uint8_t Walker = 3;

    explicit RoomScene(double timeSeconds);

    // The room and its furniture: also what other scenes set in this room see beyond their own surfaces.
    static bool traceRoom(const Vec3& origin, const Vec3& direction, SceneHit& hit);

    Kind kind() const override { return Kind::Room; }
    Lighting lighting() const override;
    bool traceStatic(const Vec3& origin, const Vec3& direction, SceneHit& hit) const override;
    bool traceObject(uint8_t object, const Vec3& origin, const Vec3& direction, float tMax,
                     SceneHit& hit) const override;
    std::vector<ScreenRect> movingRects(const PinholeCamera& camera) const override;

private:
    bool hitPendulum(const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const;
    bool hitTurntable(const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const;
    bool hitWalker(const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const;
    std::vector<Bounds> movingBounds() const;

    Vec3 m_pendulumCenter;
    Vec3 m_boxCenter;
    float m_boxCos = 1.f, m_boxSin = 0.f;
    Vec3 m_walkerFoot; // centre of the walker's footprint on the floor
    float m_headBob = 0.f;
};

} // namespace Zerlane::sim
