#pragma once

#include "Hand.h"
#include "Scene.h"

namespace Zerlane::sim {

// The close-range mode's scene: a desk in the same room, the camera standing on it 20 cm above its top and
// looking at the fabric partition along its back, 0.95 m away. On the desk a mug, a stack of books, an
// orange, a water bottle and a black phone (too dark to measure); pinned to the partition a sheet of paper
// and a retro-reflective badge (which saturates unless the saturation mode is on); and a waving hand that
// comes as near as about 0.17 m. All of it lies between about 0.15 and 1 m; above the partition a band of
// the room's ceiling is beyond the mode's 3 m.
class DeskScene : public Scene {
public:
    static constexpr uint8_t Furniture = 0;
    static constexpr uint8_t Palm = 1; // palm, fingers and thumb
    static constexpr uint8_t Arm = 2;  // wrist and forearm

    explicit DeskScene(double timeSeconds);

    Kind kind() const override { return Kind::Desk; }
    Lighting lighting() const override;
    bool traceStatic(const Vec3& origin, const Vec3& direction, SceneHit& hit) const override;
    bool traceObject(uint8_t object, const Vec3& origin, const Vec3& direction, float tMax,
                     SceneHit& hit) const override;
    void traceRow(uint8_t object, const Vec3& origin, const float* columnRays, float rowRay, int x0, int x1,
                  float* tMax, SceneHit* hits, uint8_t* found) const override;
    std::vector<ScreenRect> movingRects(const PinholeCamera& camera) const override;

private:
    Hand m_hand;
};

} // namespace Zerlane::sim
