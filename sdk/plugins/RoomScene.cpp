#include "RoomScene.h"

#include "RayGeometry.h"

#include <cmath>
#include <limits>

namespace Zerlane::sim {

namespace {

// Room, camera frame (y down): the floor is 1.2 m below the camera.
constexpr float RoomHalfWidth = 2.5f;
constexpr float FloorY = 1.2f;
constexpr float CeilingY = -1.8f;
constexpr float FarWallZ = 5.7f;
constexpr float BackWallZ = -0.3f;

// A low cabinet in the near left corner: close enough to be measured in close-range mode.
constexpr Vec3 CabinetMin{-1.9f, 0.45f, 1.4f};
constexpr Vec3 CabinetMax{-1.1f, FloorY, 2.2f};

// A retro-reflective marker on the right wall, and a dark screen on the far wall.
constexpr float MarkerZ0 = 3.7f, MarkerZ1 = 4.3f, MarkerY0 = -0.3f, MarkerY1 = 0.1f;
constexpr float ScreenX0 = -0.8f, ScreenX1 = 0.4f, ScreenY0 = -0.6f, ScreenY1 = 0.1f;

constexpr Vec3 PendulumPivot{0.3f, CeilingY, 2.6f};
constexpr float PendulumLength = 2.0f;
constexpr float PendulumRadius = 0.25f;
constexpr double PendulumPeriod = 2.84; // seconds, that of a 2 m pendulum
constexpr float PendulumAmplitude = 0.4f; // radians

constexpr float BoxHalf = 0.25f;
constexpr double BoxSlidePeriod = 9.0;
constexpr double BoxTurnRate = 0.6; // radians per second

constexpr float WalkerRadius = 0.2f;
constexpr float WalkerTopY = -0.35f; // top of the body (1.55 m above the floor)
constexpr float HeadRadius = 0.11f;
constexpr float WalkerZ = 4.6f;
constexpr float WalkerHalfPath = 1.7f;
constexpr double WalkerSpeed = 0.6; // m/s

// The ceiling lamp above the middle of the room.
constexpr Vec3 LampPosition{0.3f, -1.65f, 2.8f};
constexpr float Ambient = 0.28f;
constexpr float LampStrength = 3.4f;

using ray::MinT;
using ray::setSurface;

void shadeFloor(SceneHit& hit, const Vec3& p)
{
    // 50 cm tiles in two shades of wood.
    const int tile = int(std::floor(p.x * 2.f)) + int(std::floor(p.z * 2.f));
    if (tile & 1)
        setSurface(hit, {0.30f, 0.20f, 0.13f}, 0.35f, RoomScene::Room);
    else
        setSurface(hit, {0.55f, 0.42f, 0.30f}, 0.45f, RoomScene::Room);
}

void shadeRightWall(SceneHit& hit, const Vec3& p)
{
    const bool onMarker = p.z >= MarkerZ0 && p.z <= MarkerZ1 && p.y >= MarkerY0 && p.y <= MarkerY1;
    if (!onMarker) {
        setSurface(hit, {0.55f, 0.68f, 0.50f}, 0.7f, RoomScene::Room);
        return;
    }
    // Reflective tape: bright, with a dark diagonal stripe pattern in visible light only.
    const bool stripe = int(std::floor((p.z + p.y) * 10.f)) % 2 == 0;
    setSurface(hit, stripe ? Vec3{0.92f, 0.92f, 0.90f} : Vec3{0.75f, 0.72f, 0.20f}, 200.f, RoomScene::Room);
    hit.retroReflective = true;
}

void shadeFarWall(SceneHit& hit, const Vec3& p)
{
    const bool onScreen = p.x >= ScreenX0 && p.x <= ScreenX1 && p.y >= ScreenY0 && p.y <= ScreenY1;
    if (onScreen)
        setSurface(hit, {0.03f, 0.03f, 0.035f}, 0.03f, RoomScene::Room);
    else
        setSurface(hit, {0.80f, 0.72f, 0.58f}, 0.8f, RoomScene::Room);
}

} // namespace

RoomScene::RoomScene(double timeSeconds)
{
    const double swing = PendulumAmplitude * std::sin(2.0 * M_PI * std::fmod(timeSeconds, PendulumPeriod) / PendulumPeriod);
    m_pendulumCenter = PendulumPivot + Vec3{float(std::sin(swing)), float(std::cos(swing)), 0.f} * PendulumLength;

    const double slide = std::sin(2.0 * M_PI * std::fmod(timeSeconds, BoxSlidePeriod) / BoxSlidePeriod);
    m_boxCenter = {-0.7f, FloorY - BoxHalf, float(3.2 + 0.4 * slide)};
    const double angle = std::fmod(timeSeconds * BoxTurnRate, 2.0 * M_PI);
    m_boxCos = float(std::cos(angle));
    m_boxSin = float(std::sin(angle));

    // Back and forth across the room at walking speed.
    const double lap = 4.0 * WalkerHalfPath / WalkerSpeed;
    const double phase = std::fmod(timeSeconds, lap) / lap; // 0..1
    const double triangle = phase < 0.5 ? phase * 2.0 : 2.0 - phase * 2.0;
    m_walkerFoot = {float(-WalkerHalfPath + 2.0 * WalkerHalfPath * triangle), FloorY, WalkerZ};
    m_headBob = float(0.02 * std::sin(2.0 * M_PI * std::fmod(timeSeconds, 0.55) / 0.55));
}

Scene::Lighting RoomScene::lighting() const
{
    return {LampPosition, Ambient, LampStrength};
}

bool RoomScene::traceStatic(const Vec3& origin, const Vec3& direction, SceneHit& hit) const
{
    return traceRoom(origin, direction, hit);
}

bool RoomScene::traceRoom(const Vec3& origin, const Vec3& direction, SceneHit& hit)
{
    // From inside the room: the nearest wall the ray leaves through.
    float t = std::numeric_limits<float>::max();
    int wall = -1;
    auto consider = [&](float tWall, int id) {
        if (tWall > MinT && tWall < t) {
            t = tWall;
            wall = id;
        }
    };
    if (direction.x > 0.f)
        consider((RoomHalfWidth - origin.x) / direction.x, 0);
    else if (direction.x < 0.f)
        consider((-RoomHalfWidth - origin.x) / direction.x, 1);
    if (direction.y > 0.f)
        consider((FloorY - origin.y) / direction.y, 2);
    else if (direction.y < 0.f)
        consider((CeilingY - origin.y) / direction.y, 3);
    if (direction.z > 0.f)
        consider((FarWallZ - origin.z) / direction.z, 4);
    else if (direction.z < 0.f)
        consider((BackWallZ - origin.z) / direction.z, 5);
    if (wall < 0)
        return false;

    float tBox = 0.f;
    int axis = 0;
    float sign = 0.f;
    if (ray::box(origin, direction, CabinetMin, CabinetMax, tBox, axis, sign) && tBox < t) {
        hit.t = tBox;
        hit.normal = ray::axisNormal(axis, sign);
        setSurface(hit, {0.50f, 0.33f, 0.18f}, 0.55f, Room);
        return true;
    }

    hit.t = t;
    const Vec3 p = origin + direction * t;
    switch (wall) {
    case 0:
        hit.normal = {-1.f, 0.f, 0.f};
        shadeRightWall(hit, p);
        break;
    case 1:
        hit.normal = {1.f, 0.f, 0.f};
        setSurface(hit, {0.45f, 0.55f, 0.70f}, 0.7f, Room);
        break;
    case 2:
        hit.normal = {0.f, -1.f, 0.f};
        shadeFloor(hit, p);
        break;
    case 3:
        hit.normal = {0.f, 1.f, 0.f};
        setSurface(hit, {0.85f, 0.85f, 0.82f}, 0.8f, Room);
        break;
    case 4:
        hit.normal = {0.f, 0.f, -1.f};
        shadeFarWall(hit, p);
        break;
    default:
        hit.normal = {0.f, 0.f, 1.f};
        setSurface(hit, {0.7f, 0.7f, 0.7f}, 0.7f, Room);
        break;
    }
    return true;
}

bool RoomScene::traceObject(uint8_t object, const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const
{
    switch (object) {
    case Pendulum:
        return hitPendulum(origin, direction, tMax, hit);
    case Turntable:
        return hitTurntable(origin, direction, tMax, hit);
    case Walker:
        return hitWalker(origin, direction, tMax, hit);
    default:
        return false;
    }
}

bool RoomScene::hitPendulum(const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const
{
    float t = 0.f;
    if (!ray::sphere(origin, direction, m_pendulumCenter, PendulumRadius, t) || t >= tMax)
        return false;
    hit.t = t;
    hit.normal = (origin + direction * t - m_pendulumCenter) * (1.f / PendulumRadius);
    setSurface(hit, {0.80f, 0.12f, 0.08f}, 0.6f, Pendulum);
    return true;
}

bool RoomScene::hitTurntable(const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const
{
    // In the box's own frame the box is axis-aligned.
    const Vec3 localOrigin = ray::rotateY(origin - m_boxCenter, m_boxCos, -m_boxSin);
    const Vec3 localDirection = ray::rotateY(direction, m_boxCos, -m_boxSin);
    const Vec3 half{BoxHalf, BoxHalf, BoxHalf};
    float t = 0.f;
    int axis = 0;
    float sign = 0.f;
    if (!ray::box(localOrigin, localDirection, half * -1.f, half, t, axis, sign) || t >= tMax)
        return false;
    hit.t = t;
    hit.normal = ray::rotateY(ray::axisNormal(axis, sign), m_boxCos, m_boxSin);
    // Each pair of faces has its own shade of blue so the turning is visible.
    static constexpr Vec3 faceColors[3] = {{0.10f, 0.25f, 0.75f}, {0.20f, 0.40f, 0.85f}, {0.05f, 0.15f, 0.55f}};
    setSurface(hit, faceColors[axis], 0.5f, Turntable);
    return true;
}

bool RoomScene::hitWalker(const Vec3& origin, const Vec3& direction, float tMax, SceneHit& hit) const
{
    bool found = false;
    // Body: a vertical cylinder from the floor to WalkerTopY.
    const float ox = origin.x - m_walkerFoot.x, oz = origin.z - m_walkerFoot.z;
    const float a = direction.x * direction.x + direction.z * direction.z;
    if (a > 1e-12f) {
        const float b = ox * direction.x + oz * direction.z;
        const float c = ox * ox + oz * oz - WalkerRadius * WalkerRadius;
        const float disc = b * b - a * c;
        if (disc >= 0.f) {
            const float t = (-b - std::sqrt(disc)) / a;
            const float y = origin.y + direction.y * t;
            if (t > MinT && t < tMax && y >= WalkerTopY && y <= FloorY) {
                hit.t = t;
                hit.normal = Vec3{ox + direction.x * t, 0.f, oz + direction.z * t} * (1.f / WalkerRadius);
                // Shirt above the hips, trousers below.
                if (y < 0.35f)
                    setSurface(hit, {0.15f, 0.55f, 0.25f}, 0.5f, Walker);
                else
                    setSurface(hit, {0.10f, 0.10f, 0.18f}, 0.25f, Walker);
                found = true;
                tMax = t;
            }
        }
    }
    const Vec3 head{m_walkerFoot.x, WalkerTopY - HeadRadius - 0.02f + m_headBob, m_walkerFoot.z};
    float t = 0.f;
    if (ray::sphere(origin, direction, head, HeadRadius, t) && t < tMax) {
        hit.t = t;
        hit.normal = (origin + direction * t - head) * (1.f / HeadRadius);
        setSurface(hit, {0.80f, 0.60f, 0.45f}, 0.4f, Walker);
        found = true;
    }
    return found;
}

std::vector<Bounds> RoomScene::movingBounds() const
{
    const Vec3 r{PendulumRadius, PendulumRadius, PendulumRadius};
    const float boxReach = BoxHalf * float(M_SQRT2) + 0.01f;
    const Vec3 b{boxReach, BoxHalf, boxReach};
    const float walkerTop = WalkerTopY - 2.f * HeadRadius - 0.05f;
    return {
        {m_pendulumCenter - r, m_pendulumCenter + r},
        {m_boxCenter - b, m_boxCenter + b},
        {{m_walkerFoot.x - WalkerRadius, walkerTop, m_walkerFoot.z - WalkerRadius},
         {m_walkerFoot.x + WalkerRadius, FloorY, m_walkerFoot.z + WalkerRadius}},
    };
}

std::vector<ScreenRect> RoomScene::movingRects(const PinholeCamera& camera) const
{
    return rectsOf(movingBounds(), camera);
}

} // namespace Zerlane::sim
