#include "Hand.h"

#include "LoopClones.h"
#include "RayGeometry.h"

#include <algorithm>
#include <cmath>

namespace Zerlane::sim {

namespace {

// The hand's frame: x across the palm (thumb side negative), y from the wrist towards the fingertips, z from
// the back of the hand (which faces the camera) through the palm.
struct Box {
    Vec3 lo, hi;
};
constexpr float FingerBase = 0.10f, FingerHalfWidth = 0.009f, FingerHalfThickness = 0.009f;
constexpr Box finger(float center, float length)
{
    return {{center - FingerHalfWidth, FingerBase, -FingerHalfThickness},
            {center + FingerHalfWidth, FingerBase + length, FingerHalfThickness}};
}
constexpr Box Palm{{-0.042f, 0.f, -0.012f}, {0.042f, FingerBase, 0.012f}};
constexpr Box Thumb{{-0.085f, 0.025f, -0.010f}, {-0.042f, 0.047f, 0.010f}};
constexpr Box Fingers[] = {finger(-0.031f, 0.075f), finger(-0.0105f, 0.085f), finger(0.0105f, 0.080f),
                           finger(0.031f, 0.065f)};
// Around the fingers, and around the whole hand.
constexpr Box AllFingers{{-0.040f, FingerBase, -FingerHalfThickness}, {0.040f, FingerBase + 0.085f, FingerHalfThickness}};
constexpr Box WholeHand{{Thumb.lo.x, 0.f, Palm.lo.z}, {Palm.hi.x, AllFingers.hi.y, Palm.hi.z}};

constexpr float ForearmRadius = 0.03f;
constexpr float ForearmLength = 0.55f; // long enough to leave the picture in every pose
constexpr float BareWrist = 0.06f;     // the sleeve starts this far up the arm

constexpr Vec3 Skin{0.80f, 0.60f, 0.45f};
// Skin reflects near infrared well: without the saturation mode the hand saturates within about 0.39 m,
// with it only at its nearest.
constexpr float SkinReflectivity = 0.75f;
constexpr Vec3 SleeveColor{0.18f, 0.22f, 0.45f};
constexpr float SleeveReflectivity = 0.35f;

// Motion, camera frame (y down): periods in seconds, positions in metres, angles in radians. The hand
// hovers well inside the picture and now and then reaches quickly towards the camera; the sideways drift
// is a bearing (x / z), so that it stays in the picture as it comes near.
constexpr double HoverPeriod = 5.9, HoverMiddle = 0.55, HoverAmplitude = 0.08; // wrist z while hovering
constexpr double ReachPeriod = 8.0, ReachStart = 0.4, ReachLength = 0.2; // the reach's share of the period
constexpr double ReachNear = 0.20;                                        // wrist z at its nearest
constexpr double DriftPeriod = 4.3, DriftMiddle = 0.05, DriftAmplitude = 0.20;
constexpr double WristDrop = 0.02, WristDropPerMetre = 0.10; // the wrist sinks a little as the arm reaches out
constexpr double BobPeriod = 3.1, BobAmplitude = 0.015;
constexpr double WavePeriod = 1.7, WaveAmplitude = 0.35; // about the viewing axis
constexpr double TurnPeriod = 5.3, TurnAmplitude = 0.30; // about the vertical

double oscillation(double timeSeconds, double period)
{
    return std::sin(2.0 * M_PI * std::fmod(timeSeconds, period) / period);
}

// 0 while hovering, rising smoothly to 1 at the nearest point of a reach and back.
double reach(double timeSeconds)
{
    const double phase = std::fmod(timeSeconds, ReachPeriod) / ReachPeriod;
    if (phase < ReachStart || phase >= ReachStart + ReachLength)
        return 0.0;
    const double s = std::sin(M_PI * (phase - ReachStart) / ReachLength);
    return s * s;
}

Vec3 forearmAxis()
{
    // From the wrist to the right, a little back and down, towards the elbow: out of the picture before it
    // comes nearer than the hand, and above the desk all along.
    return Vec3{1.0f, 0.10f, -0.25f}.normalized();
}

// Whether any of rays [0, n) may enter the box nearer than best[k]. A box inside this one is never entered
// nearer (the rounding of each slab's bounds is monotone), so when none may, its boxes can be skipped.
ROW_LOOP_CLONES bool mayEnter(const Box& box, const Vec3& origin, int n, const float* __restrict ix,
                              const float* __restrict iy, const float* __restrict iz, const float* __restrict best)
{
    const Vec3 lo = box.lo - origin, hi = box.hi - origin;
    int any = 0;
    for (int k = 0; k < n; ++k) {
        const float x0 = lo.x * ix[k], x1 = hi.x * ix[k];
        const float y0 = lo.y * iy[k], y1 = hi.y * iy[k];
        const float z0 = lo.z * iz[k], z1 = hi.z * iz[k];
        const float t = std::max(std::max(std::min(x0, x1), std::min(y0, y1)), std::min(z0, z1));
        const float far = std::min(std::min(std::max(x0, x1), std::max(y0, y1)), std::max(z0, z1));
        any |= int((t <= far) & (t < best[k]));
    }
    return any != 0;
}

// Entry of rays [0, n) into one box, given their inverse directions: where it is nearer than best[k] it
// becomes best[k], and what[k] its face. Branch-free, so that it vectorises.
ROW_LOOP_CLONES void enterBox(const Box& box, const Vec3& origin, int n, const float* __restrict ix, const float* __restrict iy,
              const float* __restrict iz, float* __restrict best, int32_t* __restrict what)
{
    const Vec3 lo = box.lo - origin, hi = box.hi - origin;
    for (int k = 0; k < n; ++k) {
        const float x0 = lo.x * ix[k], x1 = hi.x * ix[k];
        const float y0 = lo.y * iy[k], y1 = hi.y * iy[k];
        const float z0 = lo.z * iz[k], z1 = hi.z * iz[k];
        const float nearX = std::min(x0, x1), nearY = std::min(y0, y1), nearZ = std::min(z0, z1);
        const float far = std::min(std::min(std::max(x0, x1), std::max(y0, y1)), std::max(z0, z1));
        const int32_t faceX = x0 > x1 ? 1 : 0, faceY = y0 > y1 ? 3 : 2, faceZ = z0 > z1 ? 5 : 4;
        const float nearXY = nearY > nearX ? nearY : nearX;
        const int32_t faceXY = nearY > nearX ? faceY : faceX;
        const float t = nearZ > nearXY ? nearZ : nearXY;
        const int32_t face = nearZ > nearXY ? faceZ : faceXY;
        const bool hit = (t <= far) & (t > ray::MinT) & (t < best[k]); // & rather than &&: no branches
        best[k] = hit ? t : best[k];
        what[k] = hit ? face : what[k];
    }
}

// Inverses of the rays' directions in the frame of axes a, b, c.
ROW_LOOP_CLONES void inverseDirections(const Vec3& a, const Vec3& b, const Vec3& c, int n, const float* __restrict dx,
                                       const float* __restrict dy, const float* __restrict dz, float* __restrict ix,
                                       float* __restrict iy, float* __restrict iz)
{
    for (int k = 0; k < n; ++k) {
        ix[k] = 1.f / (dx[k] * a.x + dy[k] * a.y + dz[k] * a.z);
        iy[k] = 1.f / (dx[k] * b.x + dy[k] * b.y + dz[k] * b.z);
        iz[k] = 1.f / (dx[k] * c.x + dy[k] * c.y + dz[k] * c.z);
    }
}

} // namespace

Hand::Hand(double timeSeconds)
{
    const double hover = HoverMiddle + HoverAmplitude * oscillation(timeSeconds, HoverPeriod);
    const double z = hover - (hover - ReachNear) * reach(timeSeconds);
    const double bearing = DriftMiddle + DriftAmplitude * oscillation(timeSeconds, DriftPeriod);
    const double drop = WristDrop + WristDropPerMetre * z + BobAmplitude * oscillation(timeSeconds, BobPeriod);
    m_wrist = {float(bearing * z), float(drop), float(z)};
    const double roll = WaveAmplitude * oscillation(timeSeconds, WavePeriod);
    const double yaw = TurnAmplitude * oscillation(timeSeconds, TurnPeriod);
    const float cr = float(std::cos(roll)), sr = float(std::sin(roll));
    const float cy = float(std::cos(yaw)), sy = float(std::sin(yaw));
    // Rolled about the viewing axis, then turned about the vertical; fingers point up (-y) when upright.
    m_across = {cy * cr, sr, -sy * cr};
    m_along = {cy * sr, -cr, -sy * sr};
    m_normal = {sy, 0.f, cy};
}

Vec3 Hand::toCamera(const Vec3& local) const
{
    return m_across * local.x + m_along * local.y + m_normal * local.z;
}

void Hand::enterHand(const Vec3& origin, int n, const float* __restrict dx, const float* __restrict dy,
                     const float* __restrict dz, float* best, int32_t* what) const
{
    // In the hand's frame every part is an axis-aligned box; the frame is rigid, so ray parameters agree.
    const Vec3 o = origin - m_wrist;
    const Vec3 localOrigin{o.dot(m_across), o.dot(m_along), o.dot(m_normal)};
    alignas(32) float ix[Batch], iy[Batch], iz[Batch];
    inverseDirections(m_across, m_along, m_normal, n, dx, dy, dz, ix, iy, iz);
    // Most batches of the hand's rectangle miss it, or at least its fingers.
    if (!mayEnter(WholeHand, localOrigin, n, ix, iy, iz, best))
        return;
    enterBox(Palm, localOrigin, n, ix, iy, iz, best, what);
    enterBox(Thumb, localOrigin, n, ix, iy, iz, best, what);
    if (!mayEnter(AllFingers, localOrigin, n, ix, iy, iz, best))
        return;
    for (const Box& box : Fingers)
        enterBox(box, localOrigin, n, ix, iy, iz, best, what);
}

ROW_LOOP_CLONES void Hand::enterForearm(const Vec3& origin, int n, const float* __restrict dx, const float* __restrict dy,
                        const float* __restrict dz, float* __restrict best, int32_t* __restrict what) const
{
    const Vec3 axis = forearmAxis();
    const Vec3 w = origin - m_wrist;
    const Vec3 offset = w - axis * w.dot(axis); // the origin's part across the axis
    const float offsetTerm = offset.dot(offset) - ForearmRadius * ForearmRadius;
    const float wristTerm = w.dot(w) - ForearmRadius * ForearmRadius;
    for (int k = 0; k < n; ++k) {
        // The wrist: a ball as thick as the arm closes the cylinder's end.
        const float a = dx[k] * dx[k] + dy[k] * dy[k] + dz[k] * dz[k];
        const float b = w.x * dx[k] + w.y * dy[k] + w.z * dz[k];
        const float disc = b * b - a * wristTerm;
        const float tWrist = (-b - std::sqrt(std::max(disc, 0.f))) / a;
        const bool wrist = (disc >= 0.f) & (tWrist > ray::MinT) & (tWrist < best[k]);
        const float nearest = wrist ? tWrist : best[k];
        // The arm: the components across its axis meet the radius.
        const float along = dx[k] * axis.x + dy[k] * axis.y + dz[k] * axis.z;
        const float cx = dx[k] - axis.x * along, cy = dy[k] - axis.y * along, cz = dz[k] - axis.z * along;
        const float aa = cx * cx + cy * cy + cz * cz;
        const float bb = cx * offset.x + cy * offset.y + cz * offset.z;
        const float armDisc = bb * bb - aa * offsetTerm;
        const float tArm = (-bb - std::sqrt(std::max(armDisc, 0.f))) / aa;
        const float reached = (w.x + dx[k] * tArm) * axis.x + (w.y + dy[k] * tArm) * axis.y + (w.z + dz[k] * tArm) * axis.z;
        const bool arm = (aa >= 1e-12f) & (armDisc >= 0.f) & (tArm > ray::MinT) & (tArm < nearest) &
                         (reached >= 0.f) & (reached <= ForearmLength);
        best[k] = arm ? tArm : nearest;
        const int32_t piece = reached < BareWrist ? BareArm : Sleeve;
        const int32_t wristOrBefore = wrist ? Wrist : what[k];
        what[k] = arm ? piece : wristOrBefore;
    }
}

void Hand::enter(Part part, const Vec3& origin, int n, const float* dx, const float* dy, const float* dz,
                 float* best, int32_t* what) const
{
    if (part == Part::Hand)
        enterHand(origin, n, dx, dy, dz, best, what);
    else
        enterForearm(origin, n, dx, dy, dz, best, what);
}

void Hand::setHit(const Vec3& origin, const Vec3& direction, float t, int32_t what, uint8_t object,
                  SceneHit& hit) const
{
    hit.t = t;
    if (what == Wrist) {
        hit.normal = (origin + direction * t - m_wrist) * (1.f / ForearmRadius);
    } else if (what == BareArm || what == Sleeve) {
        const Vec3 axis = forearmAxis();
        const Vec3 fromAxis = origin + direction * t - m_wrist;
        hit.normal = (fromAxis - axis * fromAxis.dot(axis)) * (1.f / ForearmRadius);
    } else {
        hit.normal = toCamera(ray::axisNormal(what >> 1, (what & 1) ? 1.f : -1.f));
    }
    if (what == Sleeve)
        ray::setSurface(hit, SleeveColor, SleeveReflectivity, object);
    else
        ray::setSurface(hit, Skin, SkinReflectivity, object);
}

bool Hand::trace(Part part, const Vec3& origin, const Vec3& direction, float tMax, uint8_t object,
                 SceneHit& hit) const
{
    // A batch of one: the same arithmetic as a row's.
    float best = tMax;
    int32_t what = Missed;
    enter(part, origin, 1, &direction.x, &direction.y, &direction.z, &best, &what);
    if (what == Missed)
        return false;
    setHit(origin, direction, best, what, object, hit);
    return true;
}

void Hand::traceRow(Part part, const Vec3& origin, const float* columnRays, float rowRay, int x0, int x1,
                    uint8_t object, float* tMax, SceneHit* hits, uint8_t* found) const
{
    alignas(32) float dx[Batch], dy[Batch], dz[Batch], best[Batch];
    alignas(32) int32_t what[Batch];
    for (int start = x0; start < x1; start += Batch) {
        const int n = std::min(Batch, x1 - start);
        for (int k = 0; k < n; ++k) {
            dx[k] = columnRays[start + k];
            dy[k] = rowRay;
            dz[k] = 1.f;
            best[k] = tMax[start + k];
            what[k] = Missed;
        }
        enter(part, origin, n, dx, dy, dz, best, what);
        for (int k = 0; k < n; ++k) {
            if (what[k] == Missed)
                continue;
            const int x = start + k;
            tMax[x] = best[k];
            setHit(origin, {dx[k], rowRay, 1.f}, best[k], what[k], object, hits[x]);
            found[x] = 1;
        }
    }
}

bool Hand::traceHand(const Vec3& origin, const Vec3& direction, float tMax, uint8_t object, SceneHit& hit) const
{
    return trace(Part::Hand, origin, direction, tMax, object, hit);
}

bool Hand::traceForearm(const Vec3& origin, const Vec3& direction, float tMax, uint8_t object,
                        SceneHit& hit) const
{
    return trace(Part::Forearm, origin, direction, tMax, object, hit);
}

void Hand::traceHandRow(const Vec3& origin, const float* columnRays, float rowRay, int x0, int x1, uint8_t object,
                        float* tMax, SceneHit* hits, uint8_t* found) const
{
    traceRow(Part::Hand, origin, columnRays, rowRay, x0, x1, object, tMax, hits, found);
}

void Hand::traceForearmRow(const Vec3& origin, const float* columnRays, float rowRay, int x0, int x1,
                           uint8_t object, float* tMax, SceneHit* hits, uint8_t* found) const
{
    traceRow(Part::Forearm, origin, columnRays, rowRay, x0, x1, object, tMax, hits, found);
}

Bounds Hand::handBounds() const
{
    Bounds bounds{m_wrist, m_wrist};
    for (int corner = 0; corner < 8; ++corner) {
        const Vec3 local{(corner & 1) ? WholeHand.hi.x : WholeHand.lo.x, (corner & 2) ? WholeHand.hi.y : WholeHand.lo.y,
                         (corner & 4) ? WholeHand.hi.z : WholeHand.lo.z};
        const Vec3 p = m_wrist + toCamera(local);
        bounds.min = {std::min(bounds.min.x, p.x), std::min(bounds.min.y, p.y), std::min(bounds.min.z, p.z)};
        bounds.max = {std::max(bounds.max.x, p.x), std::max(bounds.max.y, p.y), std::max(bounds.max.z, p.z)};
    }
    return bounds;
}

Bounds Hand::forearmBounds(float minimumZ) const
{
    const Vec3 axis = forearmAxis();
    // As far along the arm as its surface stays beyond minimumZ.
    const float reach = std::clamp((m_wrist.z - ForearmRadius - minimumZ) / -axis.z, 0.f, ForearmLength);
    const Vec3 end = m_wrist + axis * reach;
    const Vec3 r{ForearmRadius, ForearmRadius, ForearmRadius};
    return {Vec3{std::min(m_wrist.x, end.x), std::min(m_wrist.y, end.y), std::min(m_wrist.z, end.z)} - r,
            Vec3{std::max(m_wrist.x, end.x), std::max(m_wrist.y, end.y), std::max(m_wrist.z, end.z)} + r};
}

} // namespace Zerlane::sim
