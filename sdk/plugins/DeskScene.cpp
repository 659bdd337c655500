#include "DeskScene.h"

#include "RayGeometry.h"
#include "RoomScene.h"

#include <cmath>
#include <limits>

namespace Zerlane::sim {

namespace {

using ray::setSurface;

// Camera frame (y down), metres.
constexpr float DeskTopY = 0.20f;
constexpr Vec3 DeskMin{-0.90f, DeskTopY, -0.30f}, DeskMax{0.90f, DeskTopY + 0.03f, 0.95f};
constexpr float PartitionZ = 0.95f, PartitionTopY = -0.46f;
constexpr Vec3 PartitionMin{-0.90f, PartitionTopY, PartitionZ}, PartitionMax{0.90f, DeskTopY, PartitionZ + 0.03f};
// Pinned to the partition.
constexpr float PaperX0 = -0.46f, PaperX1 = -0.25f, PaperY0 = -0.33f, PaperY1 = -0.04f;
constexpr float BadgeX0 = 0.30f, BadgeX1 = 0.44f, BadgeY0 = -0.30f, BadgeY1 = -0.20f;
// Bright enough to saturate the pixels without the saturation mode's short exposure, not with it.
constexpr float BadgeReflectivity = 12.f;

struct Cylinder {
    float x, z, radius, height; // standing on the desk
};
constexpr Cylinder Mug{-0.20f, 0.60f, 0.042f, 0.095f};
constexpr float CoffeeRadius = 0.036f;
constexpr Cylinder Bottle{-0.40f, 0.82f, 0.035f, 0.22f};
constexpr Vec3 LowerBookMin{0.12f, DeskTopY - 0.035f, 0.66f}, LowerBookMax{0.36f, DeskTopY, 0.83f};
constexpr Vec3 UpperBookMin{0.14f, DeskTopY - 0.065f, 0.68f}, UpperBookMax{0.33f, DeskTopY - 0.035f, 0.82f};
constexpr Vec3 OrangeCenter{0.02f, DeskTopY - 0.04f, 0.78f};
constexpr float OrangeRadius = 0.04f;
constexpr Vec3 PhoneMin{-0.06f, DeskTopY - 0.009f, 0.44f}, PhoneMax{0.035f, DeskTopY, 0.59f};

// A desk lamp to the left of the camera, above and a little behind it.
constexpr Vec3 LampPosition{-0.25f, -0.50f, 0.05f};
constexpr float Ambient = 0.25f;
constexpr float LampStrength = 1.4f;

// Beyond this the forearm's surface is no nearer than the camera can picture it (see Hand).
constexpr float ForearmCutZ = 0.04f;

enum class Surface { None, Desk, Partition, MugSide, MugTop, Bottle, LowerBook, UpperBook, Orange, Phone };

// The nearest hit so far of the static surfaces.
struct Nearest {
    float t;
    Vec3 normal;
    Surface surface = Surface::None;

    void offer(float tHit, const Vec3& n, Surface s)
    {
        if (tHit < t) {
            t = tHit;
            normal = n;
            surface = s;
        }
    }
};

void offerBox(Nearest& nearest, const Vec3& origin, const Vec3& direction, const Vec3& lo, const Vec3& hi,
              Surface surface)
{
    float t = 0.f;
    int axis = 0;
    float sign = 0.f;
    if (ray::box(origin, direction, lo, hi, t, axis, sign))
        nearest.offer(t, ray::axisNormal(axis, sign), surface);
}

// A closed cylinder standing on the desk: its side, and its top seen from above.
void offerCylinder(Nearest& nearest, const Vec3& origin, const Vec3& direction, const Cylinder& c, Surface side,
                   Surface top)
{
    const float topY = DeskTopY - c.height;
    const float ox = origin.x - c.x, oz = origin.z - c.z;
    const float a = direction.x * direction.x + direction.z * direction.z;
    if (a > 1e-12f) {
        const float b = ox * direction.x + oz * direction.z;
        const float cc = ox * ox + oz * oz - c.radius * c.radius;
        const float disc = b * b - a * cc;
        if (disc >= 0.f) {
            const float t = (-b - std::sqrt(disc)) / a;
            const float y = origin.y + direction.y * t;
            if (t > ray::MinT && y >= topY && y <= DeskTopY)
                nearest.offer(t, Vec3{ox + direction.x * t, 0.f, oz + direction.z * t} * (1.f / c.radius), side);
        }
    }
    if (direction.y > 0.f && origin.y < topY) {
        const float t = (topY - origin.y) / direction.y;
        const float x = origin.x + direction.x * t - c.x, z = origin.z + direction.z * t - c.z;
        if (x * x + z * z <= c.radius * c.radius)
            nearest.offer(t, {0.f, -1.f, 0.f}, top);
    }
}

void shadeDesk(SceneHit& hit, const Vec3& p)
{
    // Oak veneer: narrow bands of two shades running away from the camera.
    const bool band = int(std::floor(p.x * 28.f + 0.3f * std::sin(p.z * 9.f))) & 1;
    setSurface(hit, band ? Vec3{0.58f, 0.42f, 0.27f} : Vec3{0.52f, 0.37f, 0.23f}, 0.5f, DeskScene::Furniture);
}

void shadePartition(SceneHit& hit, const Vec3& p)
{
    const bool front = hit.normal.z < 0.f && p.z < PartitionZ + 1e-3f;
    if (front && p.x >= PaperX0 && p.x <= PaperX1 && p.y >= PaperY0 && p.y <= PaperY1) {
        // Printed lines on the paper, visible to the colour camera only.
        const bool line = p.y > PaperY0 + 0.03f && std::fmod(p.y - PaperY0, 0.018f) < 0.004f;
        setSurface(hit, line ? Vec3{0.35f, 0.35f, 0.40f} : Vec3{0.92f, 0.92f, 0.88f}, 0.85f, DeskScene::Furniture);
        return;
    }
    if (front && p.x >= BadgeX0 && p.x <= BadgeX1 && p.y >= BadgeY0 && p.y <= BadgeY1) {
        const bool stripe = int(std::floor((p.x - p.y) * 40.f)) % 2 == 0;
        setSurface(hit, stripe ? Vec3{0.92f, 0.92f, 0.90f} : Vec3{0.85f, 0.45f, 0.10f}, BadgeReflectivity,
                   DeskScene::Furniture);
        hit.retroReflective = true;
        return;
    }
    setSurface(hit, {0.55f, 0.60f, 0.66f}, 0.6f, DeskScene::Furniture);
}

void shadeMugTop(SceneHit& hit, const Vec3& p)
{
    const float x = p.x - Mug.x, z = p.z - Mug.z;
    if (x * x + z * z <= CoffeeRadius * CoffeeRadius)
        setSurface(hit, {0.20f, 0.11f, 0.05f}, 0.15f, DeskScene::Furniture);
    else
        setSurface(hit, {0.72f, 0.10f, 0.08f}, 0.55f, DeskScene::Furniture);
}

void shade(SceneHit& hit, Surface surface, const Vec3& p)
{
    switch (surface) {
    case Surface::Desk:
        shadeDesk(hit, p);
        break;
    case Surface::Partition:
        shadePartition(hit, p);
        break;
    case Surface::MugSide:
        setSurface(hit, {0.72f, 0.10f, 0.08f}, 0.55f, DeskScene::Furniture);
        break;
    case Surface::MugTop:
        shadeMugTop(hit, p);
        break;
    case Surface::Bottle:
        setSurface(hit, {0.10f, 0.45f, 0.50f}, 0.4f, DeskScene::Furniture);
        break;
    case Surface::LowerBook:
        setSurface(hit, {0.12f, 0.40f, 0.22f}, 0.5f, DeskScene::Furniture);
        break;
    case Surface::UpperBook:
        setSurface(hit, {0.80f, 0.72f, 0.55f}, 0.7f, DeskScene::Furniture);
        break;
    case Surface::Orange:
        setSurface(hit, {0.95f, 0.45f, 0.05f}, 0.6f, DeskScene::Furniture);
        break;
    case Surface::Phone:
        setSurface(hit, {0.02f, 0.02f, 0.025f}, 0.008f, DeskScene::Furniture);
        break;
    case Surface::None:
        break;
    }
}

} // namespace

DeskScene::DeskScene(double timeSeconds) : m_hand(timeSeconds) {}

Scene::Lighting DeskScene::lighting() const
{
    return {LampPosition, Ambient, LampStrength};
}

bool DeskScene::traceStatic(const Vec3& origin, const Vec3& direction, SceneHit& hit) const
{
    Nearest nearest{std::numeric_limits<float>::max(), {}};
    offerBox(nearest, origin, direction, DeskMin, DeskMax, Surface::Desk);
    offerBox(nearest, origin, direction, PartitionMin, PartitionMax, Surface::Partition);
    offerCylinder(nearest, origin, direction, Mug, Surface::MugSide, Surface::MugTop);
    offerCylinder(nearest, origin, direction, Bottle, Surface::Bottle, Surface::Bottle);
    offerBox(nearest, origin, direction, LowerBookMin, LowerBookMax, Surface::LowerBook);
    offerBox(nearest, origin, direction, UpperBookMin, UpperBookMax, Surface::UpperBook);
    offerBox(nearest, origin, direction, PhoneMin, PhoneMax, Surface::Phone);
    float t = 0.f;
    if (ray::sphere(origin, direction, OrangeCenter, OrangeRadius, t))
        nearest.offer(t, (origin + direction * t - OrangeCenter) * (1.f / OrangeRadius), Surface::Orange);
    if (nearest.surface == Surface::None) // over the partition: the room beyond
        return RoomScene::traceRoom(origin, direction, hit);
    hit.t = nearest.t;
    hit.normal = nearest.normal;
    shade(hit, nearest.surface, origin + direction * nearest.t);
    return true;
}

bool DeskScene::traceObject(uint8_t object, const Vec3& origin, const Vec3& direction, float tMax,
                            SceneHit& hit) const
{
    switch (object) {
    case Palm:
        return m_hand.traceHand(origin, direction, tMax, Palm, hit);
    case Arm:
        return m_hand.traceForearm(origin, direction, tMax, Arm, hit);
    default:
        return false;
    }
}

void DeskScene::traceRow(uint8_t object, const Vec3& origin, const float* columnRays, float rowRay, int x0, int x1,
                         float* tMax, SceneHit* hits, uint8_t* found) const
{
    if (object == Palm)
        m_hand.traceHandRow(origin, columnRays, rowRay, x0, x1, Palm, tMax, hits, found);
    else if (object == Arm)
        m_hand.traceForearmRow(origin, columnRays, rowRay, x0, x1, Arm, tMax, hits, found);
}

std::vector<ScreenRect> DeskScene::movingRects(const PinholeCamera& camera) const
{
    return rectsOf({m_hand.handBounds(), m_hand.forearmBounds(ForearmCutZ)}, camera);
}

} // namespace Zerlane::sim
