#include "ColorRenderer.h"

#include "Scene.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Zerlane::sim {

namespace {

constexpr float ToneScale = 2048.f; // tone table entries per unit of linear light

uint8_t clampByte(int value)
{
    return uint8_t(std::clamp(value, 0, 255));
}

} // namespace

std::size_t ColorRenderer::frameBytes(const ColorNodeConfiguration& configuration)
{
    int w = 0, h = 0;
    FrameFormat_toResolution(configuration.frameFormat, &w, &h);
    const std::size_t bytesPerPixel = configuration.compression == COMPRESSION_TYPE_NONE ? 3 : 2;
    return std::size_t(std::max(w, 0)) * std::size_t(std::max(h, 0)) * bytesPerPixel;
}

void ColorRenderer::toYuy2(const uint8_t* bgr0, const uint8_t* bgr1, uint8_t* yuyv)
{
    auto luma = [](const uint8_t* p) { return ((66 * p[2] + 129 * p[1] + 25 * p[0] + 128) >> 8) + 16; };
    const int b = (bgr0[0] + bgr1[0] + 1) >> 1;
    const int g = (bgr0[1] + bgr1[1] + 1) >> 1;
    const int r = (bgr0[2] + bgr1[2] + 1) >> 1;
    yuyv[0] = clampByte(luma(bgr0));
    yuyv[1] = clampByte(((-38 * r - 74 * g + 112 * b + 128) >> 8) + 128);
    yuyv[2] = clampByte(luma(bgr1));
    yuyv[3] = clampByte(((112 * r - 94 * g - 18 * b + 128) >> 8) + 128);
}

void ColorRenderer::buildToneTable()
{
    // Gain and contrast scale the light, brightness lifts it, then a display gamma of 2.2.
    const float scale = m_picture.gain * float(m_picture.contrast) / 100.f;
    const float lift = float(m_picture.brightness) / 200.f;
    for (std::size_t i = 0; i < m_tone.size(); ++i) {
        const float light = float(i) / ToneScale;
        const float value = std::clamp(light * scale, 0.f, 1.f);
        const float display = std::pow(value, 1.f / 2.2f) + lift;
        m_tone[i] = uint8_t(std::clamp(int(display * 255.f + 0.5f), 0, 255));
    }
    // Without automatic white balance the warm lamp shows.
    m_whiteBalance = m_picture.whiteBalanceAuto ? Vec3{1.f, 1.f, 1.f} : Vec3{1.12f, 1.0f, 0.82f};
}

void ColorRenderer::shade(const SceneHit& hit, const Vec3& ray, uint8_t* bgr) const
{
    const Vec3 point = m_camera.origin + ray * hit.t;
    Vec3 normal = hit.normal;
    if (normal.dot(ray) > 0.f)
        normal = normal * -1.f;
    const Vec3 toLamp = m_lighting.lamp - point;
    const float lampDistance2 = toLamp.dot(toLamp);
    const float lambert = std::max(0.f, normal.dot(toLamp) / std::sqrt(lampDistance2));
    const float light = m_lighting.ambient + m_lighting.lampStrength * lambert / (lampDistance2 + 1.f);
    const Vec3 color = hit.albedo * m_whiteBalance * light;
    auto tone = [this](float v) { return m_tone[std::size_t(std::clamp(int(v * ToneScale), 0, 4095))]; };
    bgr[0] = tone(color.z);
    bgr[1] = tone(color.y);
    bgr[2] = tone(color.x);
}

void ColorRenderer::prepare(int width, int height, const Picture& picture, const Scene& scene)
{
    const bool sizeChanged = width != m_camera.width || height != m_camera.height;
    if (!sizeChanged && m_pictureValid && picture == m_picture && scene.kind() == m_staticKind)
        return;
    m_picture = picture;
    m_pictureValid = true;
    m_staticKind = scene.kind();
    m_lighting = scene.lighting();
    buildToneTable();
    m_camera = PinholeCamera::color(width, height);
    const std::size_t n = std::size_t(width) * std::size_t(height);
    if (sizeChanged) {
        m_columnRay.resize(std::size_t(width));
        m_rowRay.resize(std::size_t(height));
        m_rowT.resize(std::size_t(width));
        m_rowHits.resize(std::size_t(width));
        m_rowFound.resize(std::size_t(width));
        m_rowBgr.resize(std::size_t(width) * 3);
        for (int x = 0; x < width; ++x)
            m_columnRay[std::size_t(x)] = m_camera.rayX(x);
        for (int y = 0; y < height; ++y)
            m_rowRay[std::size_t(y)] = m_camera.rayY(y);
        m_staticT.resize(n);
    }
    m_staticBgr.resize(n * 3);
    m_staticYuy2.resize(n * 2);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const std::size_t i = std::size_t(y) * std::size_t(width) + std::size_t(x);
            const Vec3 ray{m_columnRay[std::size_t(x)], m_rowRay[std::size_t(y)], 1.f};
            SceneHit hit;
            uint8_t* bgr = &m_staticBgr[i * 3];
            if (scene.traceStatic(m_camera.origin, ray, hit)) {
                m_staticT[i] = hit.t;
                shade(hit, ray, bgr);
            } else {
                m_staticT[i] = 1e9f;
                bgr[0] = bgr[1] = bgr[2] = 0;
            }
        }
    }
    for (std::size_t i = 0; i + 1 < n; i += 2)
        toYuy2(&m_staticBgr[i * 3], &m_staticBgr[i * 3 + 3], &m_staticYuy2[i * 2]);
}

void ColorRenderer::mergeSpans(const std::vector<ScreenRect>& rects, int y, bool pairs)
{
    m_spans.clear();
    for (const ScreenRect& rect : rects) {
        if (y < rect.y0 || y >= rect.y1)
            continue;
        // YUY2 shares chroma between pixel pairs: whole pairs.
        const int x0 = pairs ? rect.x0 & ~1 : rect.x0;
        const int x1 = pairs ? std::min((rect.x1 + 1) & ~1, m_camera.width & ~1) : rect.x1;
        if (x1 > x0)
            m_spans.push_back({x0, y, x1, y + 1});
    }
    std::sort(m_spans.begin(), m_spans.end(), [](const ScreenRect& a, const ScreenRect& b) { return a.x0 < b.x0; });
    std::size_t merged = 0;
    for (std::size_t i = 0; i < m_spans.size(); ++i) {
        if (merged > 0 && m_spans[i].x0 <= m_spans[merged - 1].x1)
            m_spans[merged - 1].x1 = std::max(m_spans[merged - 1].x1, m_spans[i].x1);
        else
            m_spans[merged++] = m_spans[i];
    }
    m_spans.resize(merged);
}

void ColorRenderer::colorSpan(const Scene& scene, const std::vector<ScreenRect>& rects, int y, int x0, int x1)
{
    const std::size_t row = std::size_t(y) * std::size_t(m_camera.width);
    std::copy(m_staticT.begin() + std::ptrdiff_t(row) + x0, m_staticT.begin() + std::ptrdiff_t(row) + x1,
              m_rowT.begin() + x0);
    std::fill(m_rowFound.begin() + x0, m_rowFound.begin() + x1, uint8_t(0));
    // Each object only inside its rectangle: outside it, no pixel sees it.
    for (const ScreenRect& rect : rects) {
        const int from = std::max(x0, rect.x0), to = std::min(x1, rect.x1);
        if (y >= rect.y0 && y < rect.y1 && from < to)
            scene.traceRow(rect.object, m_camera.origin, m_columnRay.data(), m_rowRay[std::size_t(y)], from, to,
                           m_rowT.data(), m_rowHits.data(), m_rowFound.data());
    }
    for (int x = x0; x < x1; ++x) {
        uint8_t* bgr = &m_rowBgr[std::size_t(x) * 3];
        if (m_rowFound[std::size_t(x)])
            shade(m_rowHits[std::size_t(x)], {m_columnRay[std::size_t(x)], m_rowRay[std::size_t(y)], 1.f}, bgr);
        else
            std::memcpy(bgr, &m_staticBgr[(row + std::size_t(x)) * 3], 3);
    }
}

void ColorRenderer::renderMovingObjects(const Scene& scene, bool yuy2, uint8_t* out)
{
    const std::size_t w = std::size_t(m_camera.width);
    const std::vector<ScreenRect> rects = scene.movingRects(m_camera);
    int y0 = m_camera.height, y1 = 0;
    for (const ScreenRect& rect : rects) {
        y0 = std::min(y0, rect.y0);
        y1 = std::max(y1, rect.y1);
    }
    // Row by row, each pixel once, however the rectangles overlap.
    for (int y = y0; y < y1; ++y) {
        mergeSpans(rects, y, yuy2);
        for (const ScreenRect& span : m_spans) {
            colorSpan(scene, rects, y, span.x0, span.x1);
            if (yuy2) {
                for (int x = span.x0; x < span.x1; x += 2)
                    toYuy2(&m_rowBgr[std::size_t(x) * 3], &m_rowBgr[std::size_t(x + 1) * 3],
                           out + (std::size_t(y) * w + std::size_t(x)) * 2);
            } else {
                std::memcpy(out + (std::size_t(y) * w + std::size_t(span.x0)) * 3, &m_rowBgr[std::size_t(span.x0) * 3],
                            std::size_t(span.x1 - span.x0) * 3);
            }
        }
    }
}

void ColorRenderer::render(const ColorNodeConfiguration& configuration, const Picture& picture,
                           Scene::Kind sceneKind, double timeSeconds, uint8_t* out)
{
    int w = 0, h = 0;
    FrameFormat_toResolution(configuration.frameFormat, &w, &h);
    if (w <= 0 || h <= 0)
        return;
    const std::unique_ptr<Scene> scene = Scene::create(sceneKind, timeSeconds);
    prepare(w, h, picture, *scene);
    const bool yuy2 = configuration.compression != COMPRESSION_TYPE_NONE;
    if (yuy2)
        std::memcpy(out, m_staticYuy2.data(), m_staticYuy2.size());
    else
        std::memcpy(out, m_staticBgr.data(), m_staticBgr.size());
    renderMovingObjects(*scene, yuy2, out);
}

} // namespace Zerlane::sim
