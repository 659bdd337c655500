#pragma once

#include "Bounds.h"
#include "SceneHit.h"
#include "Vec3.h"

#include <cstdint>

namespace Zerlane::sim {

// A right hand held up over the desk by someone sitting behind and to the right of the camera: it waves,
// drifts, and now and then reaches from about 0.6 m to under 0.2 m in front of the camera and back, so the
// close-range mode sees a hand near enough to saturate. Palm, fingers and thumb are boxes in the hand's own frame;
// the sleeved forearm is a cylinder that leaves the picture towards the lower right, closed at the wrist.
// The pose is a function of time only.
class Hand {
public:
    explicit Hand(double timeSeconds);

    // Palm, fingers and thumb; the forearm and wrist. Each only if closer than tMax; hit.object = object.
    bool traceHand(const Vec3& origin, const Vec3& direction, float tMax, uint8_t object, SceneHit& hit) const;
    bool traceForearm(const Vec3& origin, const Vec3& direction, float tMax, uint8_t object, SceneHit& hit) const;
    // The same along a camera row, as Scene::traceRow; the same arithmetic, so the same hits.
    void traceHandRow(const Vec3& origin, const float* columnRays, float rowRay, int x0, int x1, uint8_t object,
                      float* tMax, SceneHit* hits, uint8_t* found) const;
    void traceForearmRow(const Vec3& origin, const float* columnRays, float rowRay, int x0, int x1, uint8_t object,
                         float* tMax, SceneHit* hits, uint8_t* found) const;

    // Camera-frame boxes around each part. The forearm's is cut at minimumZ: what lies nearer than that
    // is too far off the axis for any pixel to see.
    Bounds handBounds() const;
    Bounds forearmBounds(float minimumZ) const;

private:
    enum class Part { Hand, Forearm };
    // What a ray of a batch hit: none, a face of a hand box (axis * 2 + 1 for its positive side), or a piece
    // of the arm.
    static constexpr int32_t Missed = -1;
    static constexpr int32_t Wrist = 16, BareArm = 17, Sleeve = 18;
    // Rays are traced this many at a time, each step a plain loop over the batch that the compiler
    // vectorises.
    static constexpr int Batch = 64;

    Vec3 toCamera(const Vec3& local) const;
    void traceRow(Part part, const Vec3& origin, const float* columnRays, float rowRay, int x0, int x1,
                  uint8_t object, float* tMax, SceneHit* hits, uint8_t* found) const;
    bool trace(Part part, const Vec3& origin, const Vec3& direction, float tMax, uint8_t object,
               SceneHit& hit) const;
    // Rays [0, n) of a batch from origin along (dx, dy, dz)[k]: where the part is nearer than best[k],
    // best[k] becomes its ray parameter and what[k] what it hit.
    void enter(Part part, const Vec3& origin, int n, const float* dx, const float* dy, const float* dz, float* best,
               int32_t* what) const;
    void enterHand(const Vec3& origin, int n, const float* dx, const float* dy, const float* dz, float* best,
                   int32_t* what) const;
    void enterForearm(const Vec3& origin, int n, const float* dx, const float* dy, const float* dz, float* best,
                      int32_t* what) const;
    void setHit(const Vec3& origin, const Vec3& direction, float t, int32_t what, uint8_t object,
                SceneHit& hit) const;

    Vec3 m_wrist;
    Vec3 m_across, m_along, m_normal; // the hand's axes: across the palm, towards the fingertips, into the palm
};

} // namespace Zerlane::sim
