#pragma once

#include "PinholeCamera.h"
#include "Scene.h"
#include "ScreenRect.h"
#include "Vec3.h"

#include "Zerlane/Configurations.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Zerlane::sim {

// Renders the colour camera's view of the scene (Lambert shading under the scene's lamp) as B, G, R bytes or
// YUY2 (ITU-R BT.601, limited range). The image of the scene's static surfaces is cached per resolution,
// picture settings and scene in both encodings; each frame copies it and re-renders only the moving
// objects' rectangles.
// Not thread-safe: one renderer per node.
class ColorRenderer {
public:
    struct Picture {
        int32_t brightness = 0;   // -100..100
        int32_t contrast = 100;   // percent
        float gain = 1.f;
        bool whiteBalanceAuto = true;

        bool operator==(const Picture&) const = default;
    };

    // Bytes of one frame of that configuration (0 for an unknown frame format).
    static std::size_t frameBytes(const ColorNodeConfiguration& configuration);

    // Writes frameBytes(configuration) bytes of that scene at timeSeconds into out.
    void render(const ColorNodeConfiguration& configuration, const Picture& picture, Scene::Kind sceneKind,
                double timeSeconds, uint8_t* out);

    // YUY2 of two neighbouring B, G, R pixels.
    static void toYuy2(const uint8_t* bgr0, const uint8_t* bgr1, uint8_t* yuyv);

private:
    void prepare(int width, int height, const Picture& picture, const Scene& scene);
    void buildToneTable();
    void shade(const SceneHit& hit, const Vec3& ray, uint8_t* bgr) const;
    // Over the copy of the static image in out: the pixels that may see a moving object.
    void renderMovingObjects(const Scene& scene, bool yuy2, uint8_t* out);
    // The rectangles' spans on row y, merged where they overlap (whole YUY2 pairs with pairs), in m_spans.
    void mergeSpans(const std::vector<ScreenRect>& rects, int y, bool pairs);
    // The colours of pixels [x0, x1) of row y into the row scratch: the nearest moving object in front of
    // the static surfaces there, else the static image.
    void colorSpan(const Scene& scene, const std::vector<ScreenRect>& rects, int y, int x0, int x1);

    PinholeCamera m_camera;
    Picture m_picture;
    bool m_pictureValid = false;
    Scene::Kind m_staticKind = Scene::Kind::Room; // whose surfaces the static images hold
    Scene::Lighting m_lighting;
    Vec3 m_whiteBalance{1.f, 1.f, 1.f};
    std::array<uint8_t, 4096> m_tone{}; // linear light 0..2 -> display byte
    std::vector<float> m_columnRay, m_rowRay;
    std::vector<float> m_staticT;       // ray parameter of the static surfaces per pixel
    std::vector<uint8_t> m_staticBgr;
    std::vector<uint8_t> m_staticYuy2;
    std::vector<float> m_rowT;          // row scratch: what a moving object must be nearer than
    std::vector<SceneHit> m_rowHits;
    std::vector<uint8_t> m_rowFound;
    std::vector<uint8_t> m_rowBgr;
    std::vector<ScreenRect> m_spans;    // one row's spans to re-render
};

} // namespace Zerlane::sim
