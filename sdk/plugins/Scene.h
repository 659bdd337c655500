#pragma once

#include "Bounds.h"
#include "PinholeCamera.h"
#include "SceneHit.h"
#include "ScreenRect.h"
#include "Vec3.h"

#include "Zerlane/Configurations.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Zerlane::sim {

// What the simulated cameras look at, at one moment: surfaces that never move (callers cache their hits per
// pixel) and a few moving objects whose poses are a function of time only, so two renderings of the same
// time are identical. The camera mode chooses the scene: the long-range mode looks across a room, the
// close-range mode at a desk right in front of the camera, so that each fills the range its mode measures.
class Scene {
public:
    enum class Kind { Room, Desk };

    // How the colour camera's picture is lit: one lamp (inverse-square fall-off softened by one square
    // metre) over an ambient floor.
    struct Lighting {
        Vec3 lamp;
        float ambient = 0.f;
        float lampStrength = 0.f;
    };

    static Kind kindFor(CameraMode mode);
    // The scene of that kind with its moving objects where they are at that time (seconds; any origin).
    static std::unique_ptr<Scene> create(Kind kind, double timeSeconds);

    virtual ~Scene() = default;

    virtual Kind kind() const = 0;
    virtual Lighting lighting() const = 0;
    // The surfaces that never move.
    virtual bool traceStatic(const Vec3& origin, const Vec3& direction, SceneHit& hit) const = 0;
    // One moving object, if it is closer than tMax along the ray.
    virtual bool traceObject(uint8_t object, const Vec3& origin, const Vec3& direction, float tMax,
                             SceneHit& hit) const = 0;
    // One moving object along the pixels [x0, x1) of a camera row, whose rays from origin are
    // (columnRays[x], rowRay, 1): where it is closer than tMax[x], tMax[x] becomes the hit's ray parameter,
    // hits[x] the hit and found[x] 1; elsewhere nothing changes. The renderers trace moving objects this
    // way so that a scene can share the work common to a row; by default, traceObject for each pixel.
    virtual void traceRow(uint8_t object, const Vec3& origin, const float* columnRays, float rowRay, int x0,
                          int x1, float* tMax, SceneHit* hits, uint8_t* found) const;
    // Pixels of that camera that may see a moving object (conservative, one rectangle per object, tagged
    // with it): outside its rectangle a pixel cannot see that object.
    virtual std::vector<ScreenRect> movingRects(const PinholeCamera& camera) const = 0;

protected:
    // The rectangles of moving objects numbered from 1 in the order of their bounds.
    static std::vector<ScreenRect> rectsOf(const std::vector<Bounds>& bounds, const PinholeCamera& camera);
    static ScreenRect projectBounds(const Bounds& bounds, const PinholeCamera& camera);
};

} // namespace Zerlane::sim
