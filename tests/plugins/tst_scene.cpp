// The simulated scenes on their own: the screen rectangles of moving objects hold every pixel that sees
// them (renderers trace nothing outside), and tracing a row gives what tracing its pixels one by one gives.
#include "sdk/plugins/DeskScene.h"
#include "sdk/plugins/RoomScene.h"

#include <QtTest>

#include <vector>

using namespace Zerlane;
using namespace Zerlane::sim;

namespace {

struct Kind {
    Scene::Kind kind;
    std::vector<uint8_t> objects;
};

const Kind Kinds[] = {
    {Scene::Kind::Room, {RoomScene::Pendulum, RoomScene::Turntable, RoomScene::Walker}},
    {Scene::Kind::Desk, {DeskScene::Palm, DeskScene::Arm}},
};

// Two minutes in uneven steps, and the close-range hand's reach towards the camera (at 4 s of every 8).
std::vector<double> captureTimes()
{
    std::vector<double> times;
    for (double t = 0.0; t < 120.0; t += 2.93)
        times.push_back(t);
    for (double t = 3.6; t < 4.4; t += 0.05)
        times.push_back(t);
    return times;
}

std::vector<float> columnRays(const PinholeCamera& camera)
{
    std::vector<float> rays(std::size_t(camera.width));
    for (int x = 0; x < camera.width; ++x)
        rays[std::size_t(x)] = camera.rayX(x);
    return rays;
}

} // namespace

class TestScene : public QObject {
    Q_OBJECT

private slots:
    void movingRectsHoldEveryPixelThatSeesAnObject()
    {
        // Both cameras: the depth camera, and the colour camera beside it (rays from another origin).
        const PinholeCamera cameras[] = {PinholeCamera::depth(320, 240), PinholeCamera::color(320, 180)};
        for (const Kind& kind : Kinds) {
            for (const PinholeCamera& camera : cameras) {
                const std::vector<float> rays = columnRays(camera);
                std::vector<float> tMax(rays.size());
                std::vector<SceneHit> hits(rays.size());
                std::vector<uint8_t> found(rays.size());
                for (double time : captureTimes()) {
                    const std::unique_ptr<Scene> scene = Scene::create(kind.kind, time);
                    const std::vector<ScreenRect> rects = scene->movingRects(camera);
                    for (uint8_t object : kind.objects) {
                        for (int y = 0; y < camera.height; ++y) {
                            std::fill(tMax.begin(), tMax.end(), 1e9f);
                            std::fill(found.begin(), found.end(), uint8_t(0));
                            scene->traceRow(object, camera.origin, rays.data(), camera.rayY(y), 0, camera.width,
                                            tMax.data(), hits.data(), found.data());
                            for (const ScreenRect& rect : rects)
                                if (rect.object == object && y >= rect.y0 && y < rect.y1)
                                    std::fill(found.begin() + rect.x0, found.begin() + rect.x1, uint8_t(0));
                            const auto outside = std::find(found.begin(), found.end(), uint8_t(1));
                            if (outside != found.end())
                                QFAIL(qPrintable(QString("scene %1, object %2 seen at (%3,%4) outside its "
                                                         "rectangle at %5 s (camera %6x%7)")
                                                     .arg(int(kind.kind)).arg(object)
                                                     .arg(outside - found.begin()).arg(y).arg(time)
                                                     .arg(camera.width).arg(camera.height)));
                        }
                    }
                }
            }
        }
    }

    void aRowTracesAsItsPixelsDo()
    {
        // In front of the static surfaces, as the renderers trace: the same hits, bit for bit, and the same
        // pixels left alone, across the batches a row is cut into.
        const PinholeCamera camera = PinholeCamera::color(640, 480);
        const std::vector<float> rays = columnRays(camera);
        int seen = 0;
        for (double time : {0.0, 2.2, 3.9, 4.0, 57.3}) {
            const DeskScene scene(time);
            for (const ScreenRect& rect : scene.movingRects(camera)) {
                for (int y = rect.y0; y < rect.y1; y += 7) {
                    std::vector<float> tMax(rays.size());
                    for (int x = 0; x < camera.width; ++x) {
                        SceneHit background;
                        tMax[std::size_t(x)] = scene.traceStatic(camera.origin, {rays[std::size_t(x)], camera.rayY(y), 1.f},
                                                                 background) ? background.t : 1e9f;
                    }
                    const std::vector<float> before = tMax;
                    std::vector<SceneHit> hits(rays.size());
                    std::vector<uint8_t> found(rays.size());
                    scene.traceRow(rect.object, camera.origin, rays.data(), camera.rayY(y), rect.x0, rect.x1,
                                   tMax.data(), hits.data(), found.data());
                    for (int x = rect.x0; x < rect.x1; ++x) {
                        SceneHit hit;
                        const bool hitOne = scene.traceObject(rect.object, camera.origin,
                                                              {rays[std::size_t(x)], camera.rayY(y), 1.f},
                                                              before[std::size_t(x)], hit);
                        const std::size_t i = std::size_t(x);
                        QCOMPARE(bool(found[i]), hitOne);
                        seen += hitOne;
                        if (!hitOne) {
                            QCOMPARE(tMax[i], before[i]);
                            continue;
                        }
                        QCOMPARE(tMax[i], hit.t);
                        QCOMPARE(hits[i].t, hit.t);
                        QCOMPARE(hits[i].object, hit.object);
                        QVERIFY(hits[i].normal.x == hit.normal.x && hits[i].normal.y == hit.normal.y &&
                                hits[i].normal.z == hit.normal.z);
                        QVERIFY(hits[i].albedo.x == hit.albedo.x && hits[i].reflectivity == hit.reflectivity);
                    }
                }
            }
        }
        QVERIFY2(seen > 10000, qPrintable(QString::number(seen)));
    }
};

QTEST_GUILESS_MAIN(TestScene)
#include "tst_scene.moc"
