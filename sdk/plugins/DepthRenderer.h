#pragma once

#include "../src/Utils/BlockPool.h"
#include "FastRandom.h"
#include "PinholeCamera.h"
#include "Scene.h"
#include "ScreenRect.h"

#include "Zerlane/DepthNode.h"

#include <cstdint>
#include <vector>

namespace Zerlane::sim {

// Renders depth samples of the scene with the traits of a ToF sensor: noise growing with distance squared
// and falling with the returned signal, low-confidence, saturated, aliased and kamikaze (flying) pixels.
// The camera mode chooses the scene. Its static surfaces never move, so their hits are cached per resolution
// and scene; only moving objects are ray-cast, inside their screen rectangles. Not thread-safe: one renderer per node, used under the node's production lock.
class DepthRenderer {
public:
    // Special values of the maps.
    enum Code { Valid = 0, LowConfidence = 1, Saturated = 2, Aliased = 3, Kamikaze = 4 };
    static constexpr int16_t DepthCodeBase = 32000;              // 32001..32004
    static constexpr int16_t PhaseCodeBase = int16_t(-32768);     // 0x8001..0x8004
    static constexpr float NoiseScale = 0.0474f;                  // sigma = NoiseScale * d^2 / sqrt(signal)

    struct Settings {
        DepthNodeConfiguration configuration;
        bool phaseMap = false;
        bool confidenceMap = false;
        bool depthMap = false;
        bool depthMapFloatingPoint = false;
        bool vertices = false;
        bool verticesFloatingPoint = false;
        bool uvMap = false;
        bool depthMap3Planes = false;
        bool depthMapFloatingPoint3Planes = false;
        int32_t confidenceThreshold = 100;
        int32_t illuminationLevel = 80;
        FrameFormat colorFormat = FRAME_FORMAT_VGA; // the colour camera the UV map points into
    };

    explicit DepthRenderer(uint32_t seed);

    DepthNode::NewSampleReceivedData render(const Settings& settings, uint64_t captureTime);

    // Working range of a camera mode (the "range" property): as far as the phase reaches before it
    // wraps, so that the whole measurable scene spreads over the depth palette.
    static constexpr float range(CameraMode mode) { return unambiguousRange(mode); }
    // Modulation at 50 MHz (close) and 20 MHz (long): c / 2f.
    static constexpr float unambiguousRange(CameraMode mode)
    {
        return mode == CAMERA_MODE_CLOSE_RANGE ? 3.0f : 7.5f;
    }
    // Emitted signal strength: a white wall at 1 m, straight ahead, returns this much.
    static constexpr float illuminationPower(CameraMode mode, int32_t illuminationLevel)
    {
        return (mode == CAMERA_MODE_CLOSE_RANGE ? 6000.f : 22400.f) * float(illuminationLevel) / 80.f;
    }
    // The saturation mode adds a short exposure, which quadruples the signal the pixels can take.
    static constexpr float saturationLimit(bool saturationMode) { return saturationMode ? 120000.f : 30000.f; }

private:
    struct Outputs;

    void prepare(int width, int height, FrameFormat colorFormat, const Scene& scene);
    void buildRays();
    void buildStaticCache(const Scene& scene);
    void buildUvTables(FrameFormat colorFormat);
    void restoreDirtyRects();
    void renderMovingObjects(const Scene& scene);
    void markKamikazePixels();
    float signalFactor(const SceneHit& hit, const Vec3& ray, std::size_t index) const;
    void writeMaps(const Settings& settings, const Outputs& out);
    // One row in two steps: measure every pixel into the row scratch, then write each map in a plain loop;
    // both are branch-free per pixel so that the compiler vectorises them.
    void measureRow(int y, const Settings& settings, int16_t* __restrict confidence, FastRandom& random);
    void writeRow(int y, const Settings& settings, const Outputs& out) const;
    Acceleration measureGravity();

    PinholeCamera m_camera;
    FrameFormat m_uvFormat = FRAME_FORMAT_UNKNOWN;
    std::vector<float> m_columnRay, m_rowRay; // ray x by column, ray y by row (z = 1)
    std::vector<float> m_rayLength;           // |ray| per pixel
    std::vector<float> m_inverseRayLength;
    std::vector<float> m_vignette;            // relative illumination per pixel
    Scene::Kind m_staticKind = Scene::Kind::Room; // whose surfaces the static arrays hold
    std::vector<float> m_staticZ, m_staticSignal, m_staticNoise;
    std::vector<float> m_workZ, m_workSignal, m_workNoise; // noise: 1 / sqrt(signal factor)
    std::vector<uint32_t> m_workTag;          // object id, KamikazeTag when flagged (as wide as the floats)
    std::vector<ScreenRect> m_dirty;          // pixels that differ from the static cache
    std::vector<SceneHit> m_rowHits;          // moving objects' hits along a row
    std::vector<uint8_t> m_rowFound;
    std::vector<float> m_columnU, m_rowV;     // UV of a point at infinity; u shifts by -m_uParallax / z
    float m_uParallax = 0.f;

    std::vector<float> m_rowZ;        // measured z per pixel of the row, 0 where invalid
    std::vector<float> m_rowDistance; // measured distance along the ray
    std::vector<int32_t> m_rowCode;   // Code per pixel of the row (as wide as the floats, so loops vectorise)
    std::vector<int16_t> m_rowConfidence; // where the confidence goes when its map is off

    FastRandom m_random;
    Utils::BlockPool m_pool;
};

} // namespace Zerlane::sim
