#include "DepthRenderer.h"

#include "GaussianTable.h"
#include "LoopClones.h"
#include "Scene.h"

#include <algorithm>
#include <cmath>
#include <cstring>

// The row loops below gain most from AVX2's cheaper narrowing to 16 bits (see LoopClones.h).

namespace Zerlane::sim {

namespace {

constexpr uint32_t KamikazeTag = 0x80;
constexpr uint32_t ObjectMask = 0x7f;
// Neighbours further apart than this in depth straddle an edge: a moving edge smears into flying pixels.
constexpr float KamikazeDepthJump = 0.12f;
constexpr float MaxNoiseSigma = 0.15f;

// Noise falls with the square root of the signal: keep 1/sqrt per pixel so no frame takes square roots.
inline float noiseFactor(float signal)
{
    return signal > 0.f ? 1.f / std::sqrt(signal) : 1e6f;
}

inline int16_t toMillimetres(float metres)
{
    const float mm = metres * 1000.f;
    return int16_t(int(mm + std::copysign(0.5f, mm)));
}

std::size_t alignUp(std::size_t offset)
{
    return (offset + 63) / 64 * 64;
}

} // namespace

// Where this sample's maps go inside its block; null for maps that are switched off.
struct DepthRenderer::Outputs {
    int16_t* phase = nullptr;
    int16_t* confidence = nullptr;
    int16_t* depth = nullptr;       // one plane of depths, or three planes of coordinates
    float* depthFloat = nullptr;    // likewise
    Vertex* vertices = nullptr;
    FPVertex* verticesFloat = nullptr;
    UV* uv = nullptr;
};

DepthRenderer::DepthRenderer(uint32_t seed) : m_random(seed) {}

void DepthRenderer::prepare(int width, int height, FrameFormat colorFormat, const Scene& scene)
{
    const bool resized = width != m_camera.width || height != m_camera.height;
    if (resized) {
        m_camera = PinholeCamera::depth(width, height);
        buildRays();
        m_uvFormat = FRAME_FORMAT_UNKNOWN;
    }
    if (resized || scene.kind() != m_staticKind)
        buildStaticCache(scene);
    if (colorFormat != m_uvFormat)
        buildUvTables(colorFormat);
}

void DepthRenderer::buildRays()
{
    const int w = m_camera.width, h = m_camera.height;
    const std::size_t n = std::size_t(w) * std::size_t(h);
    m_columnRay.resize(std::size_t(w));
    m_rowRay.resize(std::size_t(h));
    for (int x = 0; x < w; ++x)
        m_columnRay[std::size_t(x)] = m_camera.rayX(x);
    for (int y = 0; y < h; ++y)
        m_rowRay[std::size_t(y)] = m_camera.rayY(y);

    m_rayLength.resize(n);
    m_inverseRayLength.resize(n);
    m_vignette.resize(n);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const std::size_t i = std::size_t(y) * std::size_t(w) + std::size_t(x);
            const Vec3 ray{m_columnRay[std::size_t(x)], m_rowRay[std::size_t(y)], 1.f};
            const float length = ray.length();
            m_rayLength[i] = length;
            m_inverseRayLength[i] = 1.f / length;
            // Illumination and lens fall off as cos^2 of the angle off the axis.
            m_vignette[i] = 1.f / (length * length);
        }
    }
}

void DepthRenderer::buildStaticCache(const Scene& scene)
{
    const int w = m_camera.width, h = m_camera.height;
    const std::size_t n = std::size_t(w) * std::size_t(h);
    m_staticZ.resize(n);
    m_staticSignal.resize(n);
    m_staticNoise.resize(n);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const std::size_t i = std::size_t(y) * std::size_t(w) + std::size_t(x);
            const Vec3 ray{m_columnRay[std::size_t(x)], m_rowRay[std::size_t(y)], 1.f};
            SceneHit hit;
            if (scene.traceStatic({}, ray, hit)) {
                m_staticZ[i] = hit.t;
                m_staticSignal[i] = signalFactor(hit, ray, i);
            } else {
                m_staticZ[i] = 0.f;
                m_staticSignal[i] = 0.f;
            }
            m_staticNoise[i] = noiseFactor(m_staticSignal[i]);
        }
    }
    m_workZ = m_staticZ;
    m_workSignal = m_staticSignal;
    m_workNoise = m_staticNoise;
    m_workTag.assign(n, 0);
    m_dirty.clear();
    m_staticKind = scene.kind();
}

void DepthRenderer::buildUvTables(FrameFormat colorFormat)
{
    int cw = 0, ch = 0;
    FrameFormat_toResolution(colorFormat, &cw, &ch);
    if (cw <= 0 || ch <= 0) {
        cw = 640;
        ch = 480;
    }
    const PinholeCamera color = PinholeCamera::color(cw, ch);
    // A point z * (rx, ry, 1) lands at u = (f (z rx - b) / z + cx) / W = (f rx + cx) / W - (f b / W) / z.
    m_columnU.resize(m_columnRay.size());
    m_rowV.resize(m_rowRay.size());
    for (std::size_t x = 0; x < m_columnRay.size(); ++x)
        m_columnU[x] = (color.focal * m_columnRay[x] + color.centerX()) / float(cw);
    for (std::size_t y = 0; y < m_rowRay.size(); ++y)
        m_rowV[y] = (color.focal * m_rowRay[y] + color.centerY()) / float(ch);
    m_uParallax = color.focal * color.origin.x / float(cw);
    m_uvFormat = colorFormat;
}

float DepthRenderer::signalFactor(const SceneHit& hit, const Vec3& ray, std::size_t i) const
{
    // Returned signal ~ reflectivity * cos(incidence) / distance^2; retro-reflectors send it all back.
    const float length = m_rayLength[i];
    const float distance = hit.t * length;
    const float cosine = hit.retroReflective ? 1.f : std::fabs(hit.normal.dot(ray)) / length;
    return hit.reflectivity * cosine * m_vignette[i] / (distance * distance);
}

void DepthRenderer::restoreDirtyRects()
{
    const std::size_t w = std::size_t(m_camera.width);
    for (const ScreenRect& rect : m_dirty) {
        const std::size_t span = std::size_t(rect.x1 - rect.x0);
        for (int y = rect.y0; y < rect.y1; ++y) {
            const std::size_t i = std::size_t(y) * w + std::size_t(rect.x0);
            std::memcpy(&m_workZ[i], &m_staticZ[i], span * sizeof(float));
            std::memcpy(&m_workSignal[i], &m_staticSignal[i], span * sizeof(float));
            std::memcpy(&m_workNoise[i], &m_staticNoise[i], span * sizeof(float));
            std::memset(&m_workTag[i], 0, span * sizeof(uint32_t));
        }
    }
    m_dirty.clear();
}

void DepthRenderer::renderMovingObjects(const Scene& scene)
{
    const int w = m_camera.width;
    m_rowHits.resize(std::size_t(w));
    m_rowFound.resize(std::size_t(w));
    for (const ScreenRect& rect : scene.movingRects(m_camera)) {
        for (int y = rect.y0; y < rect.y1; ++y) {
            const std::size_t row = std::size_t(y) * std::size_t(w);
            std::fill(m_rowFound.begin() + rect.x0, m_rowFound.begin() + rect.x1, uint8_t(0));
            // The work z is what an object must be nearer than, and becomes its z where it is.
            scene.traceRow(rect.object, {}, m_columnRay.data(), m_rowRay[std::size_t(y)], rect.x0, rect.x1,
                           m_workZ.data() + row, m_rowHits.data(), m_rowFound.data());
            for (int x = rect.x0; x < rect.x1; ++x) {
                if (!m_rowFound[std::size_t(x)])
                    continue;
                const std::size_t i = row + std::size_t(x);
                const SceneHit& hit = m_rowHits[std::size_t(x)];
                const Vec3 ray{m_columnRay[std::size_t(x)], m_rowRay[std::size_t(y)], 1.f};
                m_workSignal[i] = signalFactor(hit, ray, i);
                m_workNoise[i] = noiseFactor(m_workSignal[i]);
                m_workTag[i] = hit.object;
            }
        }
        // Kamikaze flags may reach one pixel beyond the rectangle.
        m_dirty.push_back({rect.x0, rect.y0, std::min(rect.x1 + 1, w), std::min(rect.y1 + 1, m_camera.height)});
    }
}

void DepthRenderer::markKamikazePixels()
{
    const int w = m_camera.width, h = m_camera.height;
    auto differ = [&](std::size_t a, std::size_t b) {
        return (m_workTag[a] & ObjectMask) != (m_workTag[b] & ObjectMask) &&
               std::fabs(m_workZ[a] - m_workZ[b]) > KamikazeDepthJump;
    };
    for (const ScreenRect& rect : m_dirty) {
        for (int y = rect.y0; y < rect.y1; ++y) {
            for (int x = rect.x0; x < rect.x1; ++x) {
                const std::size_t i = std::size_t(y) * std::size_t(w) + std::size_t(x);
                if (x + 1 < w && differ(i, i + 1)) {
                    m_workTag[i] |= KamikazeTag;
                    m_workTag[i + 1] |= KamikazeTag;
                }
                if (y + 1 < h && differ(i, i + std::size_t(w))) {
                    m_workTag[i] |= KamikazeTag;
                    m_workTag[i + std::size_t(w)] |= KamikazeTag;
                }
            }
        }
    }
}

Acceleration DepthRenderer::measureGravity()
{
    // The camera stands nearly level: gravity points down (+y), plus accelerometer noise.
    const GaussianTable& gauss = GaussianTable::instance();
    Acceleration a;
    a.x = 0.012f + 0.003f * gauss.sample(m_random);
    a.y = 0.9992f + 0.003f * gauss.sample(m_random);
    a.z = -0.035f + 0.003f * gauss.sample(m_random);
    return a;
}

DepthNode::NewSampleReceivedData DepthRenderer::render(const Settings& settings, uint64_t captureTime)
{
    int w = 0, h = 0;
    FrameFormat_toResolution(settings.configuration.frameFormat, &w, &h);
    const std::unique_ptr<Scene> scene =
        Scene::create(Scene::kindFor(settings.configuration.mode), double(captureTime) * 1e-6);
    prepare(w, h, settings.colorFormat, *scene);

    restoreDirtyRects();
    renderMovingObjects(*scene);
    markKamikazePixels();

    // One block holds every map of the sample.
    const std::size_t n = std::size_t(w) * std::size_t(h);
    const std::size_t depthCount = settings.depthMap3Planes ? 3 * n : n;
    const std::size_t depthFloatCount = settings.depthMapFloatingPoint3Planes ? 3 * n : n;
    std::size_t offsets[7] = {};
    std::size_t size = 0;
    auto place = [&](int slot, bool enabled, std::size_t bytes) {
        if (!enabled)
            return;
        offsets[slot] = size;
        size = alignUp(size + bytes);
    };
    place(0, settings.phaseMap, n * sizeof(int16_t));
    place(1, settings.confidenceMap, n * sizeof(int16_t));
    place(2, settings.depthMap, depthCount * sizeof(int16_t));
    place(3, settings.depthMapFloatingPoint, depthFloatCount * sizeof(float));
    place(4, settings.vertices, n * sizeof(Vertex));
    place(5, settings.verticesFloatingPoint, n * sizeof(FPVertex));
    place(6, settings.uvMap, n * sizeof(UV));

    DepthNode::NewSampleReceivedData sample;
    sample.captureConfiguration = settings.configuration;
    sample.timeOfCapture = captureTime;
    sample.acceleration = measureGravity();

    std::shared_ptr<uint8_t> block = size ? m_pool.acquire(size) : nullptr;
    Outputs out;
    uint8_t* base = block.get();
    if (settings.phaseMap)
        out.phase = reinterpret_cast<int16_t*>(base + offsets[0]);
    if (settings.confidenceMap)
        out.confidence = reinterpret_cast<int16_t*>(base + offsets[1]);
    if (settings.depthMap)
        out.depth = reinterpret_cast<int16_t*>(base + offsets[2]);
    if (settings.depthMapFloatingPoint)
        out.depthFloat = reinterpret_cast<float*>(base + offsets[3]);
    if (settings.vertices)
        out.vertices = reinterpret_cast<Vertex*>(base + offsets[4]);
    if (settings.verticesFloatingPoint)
        out.verticesFloat = reinterpret_cast<FPVertex*>(base + offsets[5]);
    if (settings.uvMap)
        out.uv = reinterpret_cast<UV*>(base + offsets[6]);

    writeMaps(settings, out);

    const std::shared_ptr<const void> owner = block;
    sample.phaseMap = Pointer<int16_t>(owner, out.phase, int32_t(n));
    sample.confidenceMap = Pointer<int16_t>(owner, out.confidence, int32_t(n));
    sample.depthMap = Pointer<int16_t>(owner, out.depth, int32_t(depthCount));
    sample.depthMapFloatingPoint = Pointer<float>(owner, out.depthFloat, int32_t(depthFloatCount));
    sample.vertices = Pointer<Vertex>(owner, out.vertices, int32_t(n));
    sample.verticesFloatingPoint = Pointer<FPVertex>(owner, out.verticesFloat, int32_t(n));
    sample.uvMap = Pointer<UV>(owner, out.uv, int32_t(n));
    return sample;
}

void DepthRenderer::writeMaps(const Settings& settings, const Outputs& out)
{
    const std::size_t w = std::size_t(m_camera.width);
    m_rowZ.resize(w);
    m_rowDistance.resize(w);
    m_rowCode.resize(w);
    m_rowConfidence.resize(w);
    // A local copy of the generator keeps its state in a register across the row loops.
    FastRandom random = m_random;
    for (int y = 0; y < m_camera.height; ++y) {
        int16_t* const confidence = out.confidence ? out.confidence + std::size_t(y) * w : m_rowConfidence.data();
        measureRow(y, settings, confidence, random);
        writeRow(y, settings, out);
    }
    m_random = random;
}

ROW_LOOP_CLONES void DepthRenderer::measureRow(int y, const Settings& settings, int16_t* __restrict confidence, FastRandom& random)
{
    const CameraMode mode = settings.configuration.mode;
    const int w = m_camera.width;
    const std::size_t row = std::size_t(y) * std::size_t(w);
    const float power = illuminationPower(mode, settings.illuminationLevel);
    const float saturation = saturationLimit(settings.configuration.saturation);
    const float unambiguous = unambiguousRange(mode);
    const float threshold = float(std::max(settings.confidenceThreshold, 1));
    const float noiseScale = NoiseScale / std::sqrt(std::max(power, 1e-6f));
    const float* __restrict const gauss = GaussianTable::instance().run(random);

    const float* __restrict const zs = m_workZ.data() + row;
    const float* __restrict const signals = m_workSignal.data() + row;
    const float* __restrict const noises = m_workNoise.data() + row;
    const uint32_t* __restrict const tags = m_workTag.data() + row;
    const float* __restrict const lengths = m_rayLength.data() + row;
    const float* __restrict const inverseLengths = m_inverseRayLength.data() + row;
    float* __restrict const rowZ = m_rowZ.data();
    float* __restrict const rowDistance = m_rowDistance.data();
    int32_t* __restrict const rowCode = m_rowCode.data();

    // Branch-free so that it vectorises: every pixel gets its noise, invalid ones are zeroed afterwards.
    // The row scratch and the maps never overlap the work arrays (ivdep spares the run-time alias checks).
#pragma GCC ivdep
    for (int x = 0; x < w; ++x) {
        const float signal = signals[x] * power;
        const float distance = zs[x] * lengths[x];
        const float noise = noises[x], inverseLength = inverseLengths[x], deviate = gauss[x];
        const int32_t kamikaze = (tags[x] & KamikazeTag) ? Kamikaze : Valid;
        const int32_t lowOrKamikaze = signal < threshold ? int32_t(LowConfidence) : kamikaze;
        const int32_t aliasedOrLower = distance > unambiguous ? int32_t(Aliased) : lowOrKamikaze;
        const int32_t code = signal > saturation ? int32_t(Saturated) : aliasedOrLower;
        rowCode[x] = code;
        const int32_t strength = int32_t(std::min(signal, 32767.f));
        confidence[x] = int16_t(signal > saturation ? PhaseCodeBase + Saturated : strength);
        // Range noise along the ray; the point stays on the pixel's ray, so it still back-projects.
        const float sigma = std::min(noiseScale * distance * distance * noise, MaxNoiseSigma);
        const float measured = std::min(std::max(distance + deviate * sigma, 0.001f), unambiguous);
        const float z = measured * inverseLength;
        rowDistance[x] = code == Valid ? measured : 0.f;
        rowZ[x] = code == Valid ? z : 0.f;
    }
}

ROW_LOOP_CLONES void DepthRenderer::writeRow(int y, const Settings& settings, const Outputs& out) const
{
    const int w = m_camera.width;
    const std::size_t n = std::size_t(w) * std::size_t(m_camera.height);
    const std::size_t row = std::size_t(y) * std::size_t(w);
    const float phaseScale = 32767.f / unambiguousRange(settings.configuration.mode);
    const float ry = m_rowRay[std::size_t(y)];
    const float v = m_rowV[std::size_t(y)];
    const float parallax = m_uParallax;
    const float* __restrict const columnRay = m_columnRay.data();
    const float* __restrict const columnU = m_columnU.data();
    const float* __restrict const zm = m_rowZ.data();
    const float* __restrict const distance = m_rowDistance.data();
    const int32_t* __restrict const code = m_rowCode.data();

    // Invalid pixels have zm == 0, which makes their vertices (0, 0, 0) without a test.
    if (out.phase) {
        int16_t* __restrict const phase = out.phase + row;
        for (int x = 0; x < w; ++x) {
            const int32_t measured = int32_t(std::min(distance[x] * phaseScale, 32767.f));
            phase[x] = int16_t(code[x] ? PhaseCodeBase + code[x] : measured);
        }
    }
    if (out.depth && !settings.depthMap3Planes) {
        int16_t* __restrict const depth = out.depth + row;
        for (int x = 0; x < w; ++x) {
            const int32_t measured = toMillimetres(zm[x]);
            depth[x] = int16_t(code[x] ? DepthCodeBase + code[x] : measured);
        }
    }
    if (out.depth && settings.depthMap3Planes) {
        int16_t* __restrict const xs = out.depth + row;
        int16_t* __restrict const ys = xs + n;
        int16_t* __restrict const zs = ys + n;
        for (int x = 0; x < w; ++x) {
            xs[x] = toMillimetres(zm[x] * columnRay[x]);
            ys[x] = toMillimetres(zm[x] * ry);
            zs[x] = toMillimetres(zm[x]);
        }
    }
    if (out.depthFloat && !settings.depthMapFloatingPoint3Planes) {
        float* __restrict const depth = out.depthFloat + row;
        for (int x = 0; x < w; ++x) {
            const float measured = zm[x];
            depth[x] = code[x] ? -float(code[x]) : measured;
        }
    }
    if (out.depthFloat && settings.depthMapFloatingPoint3Planes) {
        float* __restrict const xs = out.depthFloat + row;
        float* __restrict const ys = xs + n;
        float* __restrict const zs = ys + n;
        for (int x = 0; x < w; ++x) {
            xs[x] = zm[x] * columnRay[x];
            ys[x] = zm[x] * ry;
            zs[x] = zm[x];
        }
    }
    if (out.vertices) {
        Vertex* __restrict const vertices = out.vertices + row;
        for (int x = 0; x < w; ++x)
            vertices[x] = Vertex{toMillimetres(zm[x] * columnRay[x]), toMillimetres(zm[x] * ry), toMillimetres(zm[x])};
    }
    if (out.verticesFloat) {
        FPVertex* __restrict const vertices = out.verticesFloat + row;
        for (int x = 0; x < w; ++x)
            vertices[x] = FPVertex{zm[x] * columnRay[x], zm[x] * ry, zm[x]};
    }
    if (out.uv) {
        UV* __restrict const uv = out.uv + row;
        for (int x = 0; x < w; ++x) {
            // zm == 0 divides to infinity, which the select drops.
            const float u = columnU[x] - parallax / zm[x];
            uv[x] = UV{code[x] ? -1.f : u, code[x] ? -1.f : v};
        }
    }
}

} // namespace Zerlane::sim
