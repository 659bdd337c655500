// The OpenGL view of one buffer: pixel mapping, camera arithmetic, the triangle table, the mouse
// camera, and real paints under Xvfb (Mesa) checked on the grabbed framebuffer, with samples from the
// stepped simulated camera (through the camera manager's view context) and with buffers filled by
// hand (through a view context of the test's own, with no camera manager behind it).

#include "events/EventsFixture.h"

#include "camera/DeviceData.h"
#include "views/AxisMesh.h"
#include "views/CameraViewContext.h"
#include "views/DisplayWidget.h"
#include "views/TriangleTable.h"
#include "views/ViewCamera.h"
#include "worker/Settings.h"

#include <QOpenGLContext>
#include <QtTest>

#include <GL/gl.h>

#include <cmath>
#include <set>

namespace {

// The program as the views see it, set by the test.
class TestViewContext : public ViewContext {
public:
    bool streamingStopped() const override { return stopped; }
    qint64 relativeTime(quint64 time) const override { return qint64(time - referenceTime); }
    void lockBuffers() override
    {
        buffersLock.lock();
        ++buffersLocked;
    }
    void unlockBuffers() override { buffersLock.unlock(); }
    DisplayPreferences preferences() const override
    {
        ++preferenceReads;
        return values;
    }

    bool stopped = false;
    quint64 referenceTime = 0;
    DisplayPreferences values;
    QMutex buffersLock;
    int buffersLocked = 0;
    mutable int preferenceReads = 0;
};

// A device with a depth node (floating-point vertices and UV) and a colour node, none of them known to
// the camera service, so that nothing but the test writes into their buffers.
struct HandMadeRecords {
    HandMadeRecords()
    {
        device = new DeviceData(Zerlane::Device(), {});
        depth = new NodeData(Zerlane::Node(), device, {});
        colour = new NodeData(Zerlane::Node(), device, {});
        device->nodes = {depth, colour};
        vertices = new BufferData(depth, BufferData::VerticesFloatingPoint);
        uv = new BufferData(depth, BufferData::UV);
        depth->buffers = {vertices, uv};
        image = new BufferData(colour, BufferData::Color);
        colour->buffers = {image};
    }
    ~HandMadeRecords()
    {
        depth->release();
        colour->release();
        device->release();
    }
    DeviceData* device;
    NodeData* depth;
    NodeData* colour;
    BufferData* vertices;
    BufferData* uv;
    BufferData* image;
};

// Makes `slot` the completed slot of a buffer, holding a frame of w x h as the event thread leaves it.
void completeSlot(BufferData* buffer, int slot, uint32_t w, uint32_t h)
{
    buffer->writeSlot = 1 - slot;
    buffer->sizeChanged[slot] = false;
    buffer->width[slot] = w;
    buffer->height[slot] = h;
    buffer->image[slot].resize(w, h);
    buffer->image[slot].markChanged();
    ++buffer->frameCount;
}

void fillBgr(BufferData* buffer, int slot, int r, int g, int b)
{
    DisplayImage& image = buffer->image[slot];
    for (uint32_t i = 0; i < image.width * image.height; ++i) {
        image.pixels[3 * i] = uint8_t(b);
        image.pixels[3 * i + 1] = uint8_t(g);
        image.pixels[3 * i + 2] = uint8_t(r);
    }
}

QColor at(const QImage& image, int x, int y)
{
    return QColor(image.pixel(x, y));
}

bool near(const QColor& c, int r, int g, int b, int tolerance = 1)
{
    return std::abs(c.red() - r) <= tolerance && std::abs(c.green() - g) <= tolerance &&
           std::abs(c.blue() - b) <= tolerance;
}

QString describe(const QColor& c)
{
    return QStringLiteral("(%1,%2,%3)").arg(c.red()).arg(c.green()).arg(c.blue());
}

void sendMouse(QWidget* w, QEvent::Type type, QPoint p, Qt::MouseButton button, Qt::MouseButtons buttons,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QMouseEvent event(type, QPointF(p), QPointF(w->mapToGlobal(p)), button, buttons, modifiers);
    QCoreApplication::sendEvent(w, &event);
}

void sendWheel(QWidget* w, int delta)
{
    QWheelEvent event(QPointF(10, 10), QPointF(w->mapToGlobal(QPoint(10, 10))), QPoint(), QPoint(0, delta),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(w, &event);
}

struct Camera {
    float x, y, z, distance, pan, tilt;
};

Camera cameraOf(const DisplayWidget& w)
{
    Camera c{};
    w.camera(&c.x, &c.y, &c.z, &c.distance, &c.pan, &c.tilt);
    return c;
}

} // namespace

class TestDisplayWidget : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ViewerTest::isolateSettings();
        fixture.start();
    }

    void cleanupTestCase() { fixture.stop(); }

    void init()
    {
        Settings::store().clear();
        fixture.manager->setStreamingState(CameraManager::Streaming);
        own.stopped = false;
        own.values = DisplayPreferences();
    }

    void widgetAndImagePixels()
    {
        const QSize widget(640, 480), image(320, 240);
        QCOMPARE(DisplayWidget::widgetToImage({639, 479}, widget, image, false), QPoint(319, 239));
        QCOMPARE(DisplayWidget::widgetToImage({0, 0}, widget, image, false), QPoint(0, 0));
        QCOMPARE(DisplayWidget::widgetToImage({1, 1}, widget, image, false), QPoint(0, 0));
        // Mirrored, the leftmost widget column shows the image's last column and the other way round.
        QCOMPARE(DisplayWidget::widgetToImage({0, 5}, widget, image, true), QPoint(319, 2));
        QCOMPARE(DisplayWidget::widgetToImage({639, 5}, widget, image, true), QPoint(0, 2));
        // Image to widget: an image column's left edge; mirrored, column 0 lands at the right edge.
        QCOMPARE(DisplayWidget::imageToWidget({319, 239}, widget, image, false), QPoint(638, 478));
        QCOMPARE(DisplayWidget::imageToWidget({0, 0}, widget, image, true), QPoint(638, 0));
        QCOMPARE(DisplayWidget::imageToWidget({319, 0}, widget, image, true), QPoint(0, 0));
        // Every widget pixel maps back into the image pixel that covers it.
        for (int x = 0; x < 640; ++x) {
            const QPoint p = DisplayWidget::widgetToImage({x, 0}, widget, image, true);
            const QPoint left = DisplayWidget::imageToWidget(p, widget, image, true);
            QVERIFY2(left.x() <= x && x < left.x() + 2, qPrintable(QString::number(x)));
        }
        // A widget not laid out yet maps nowhere rather than dividing by zero.
        QCOMPARE(DisplayWidget::widgetToImage({3, 3}, QSize(0, 0), image, false), QPoint(0, 0));
    }

    void extensionTokens()
    {
        const char* name = "GL_ARB_texture_border_clamp";
        QVERIFY(DisplayWidget::hasExtension("GL_ARB_texture_border_clamp", name));
        QVERIFY(DisplayWidget::hasExtension("GL_A GL_ARB_texture_border_clamp GL_B", name));
        QVERIFY(DisplayWidget::hasExtension("GL_A GL_ARB_texture_border_clamp", name));
        QVERIFY(!DisplayWidget::hasExtension("GL_ARB_texture_border_clampX GL_B", name));
        QVERIFY(!DisplayWidget::hasExtension("XGL_ARB_texture_border_clamp", name));
        // A prefix first does not hide the real token later on.
        QVERIFY(DisplayWidget::hasExtension("GL_ARB_texture_border_clamp_more GL_ARB_texture_border_clamp", name));
        QVERIFY(!DisplayWidget::hasExtension("", name));
        QVERIFY(!DisplayWidget::hasExtension(nullptr, name));
    }

    void cameraArithmetic()
    {
        float ex, ey, ez;
        // The front preset puts the eye at the origin, looking at the target half a metre ahead.
        ViewCamera::eyeFromCamera(0.f, 0.f, 0.5f, 0.5f, 0.f, 0.f, &ex, &ey, &ez);
        QVERIFY(std::fabs(ex) < 1e-6f && std::fabs(ey) < 1e-6f && std::fabs(ez) < 1e-6f);
        ViewCamera::eyeFromCamera(1.f, 2.f, 3.f, 2.f, 90.f, 0.f, &ex, &ey, &ez);
        QVERIFY(std::fabs(ex - 3.f) < 1e-5f && std::fabs(ey - 2.f) < 1e-5f && std::fabs(ez - 3.f) < 1e-5f);
        ViewCamera::eyeFromCamera(0.f, 0.f, 0.f, 1.f, 0.f, 90.f, &ex, &ey, &ez); // looking straight down
        QVERIFY(std::fabs(ey + 1.f) < 1e-5f);

        for (float tilt = -80.f; tilt <= 80.f; tilt += 20.f) {
            for (float pan = 5.f; pan < 360.f; pan += 25.f) {
                ViewCamera::eyeFromCamera(0.1f, -0.2f, 0.7f, 1.5f, pan, tilt, &ex, &ey, &ez);
                float distance, backPan, backTilt;
                ViewCamera::cameraFromEye(0.1f, -0.2f, 0.7f, ex, ey, ez, &distance, &backPan, &backTilt);
                const QString where = QStringLiteral("pan %1 tilt %2 -> %3 %4").arg(pan).arg(tilt).arg(backPan).arg(backTilt);
                QVERIFY2(std::fabs(distance - 1.5f) < 1e-4f, qPrintable(where));
                // acos in single precision is coarse next to pan 0 and 180; the eye itself comes back.
                QVERIFY2(std::fabs(backPan - pan) < 0.1f, qPrintable(where));
                QVERIFY2(std::fabs(backTilt - tilt) < 0.02f, qPrintable(where));
                float bx, by, bz;
                ViewCamera::eyeFromCamera(0.1f, -0.2f, 0.7f, distance, backPan, backTilt, &bx, &by, &bz);
                QVERIFY2(std::fabs(bx - ex) < 1e-3f && std::fabs(by - ey) < 1e-3f && std::fabs(bz - ez) < 1e-3f,
                         qPrintable(where));
            }
        }
        // Straight above the target the pan is undefined and taken as 0; an eye on the target gives no NaN.
        float distance, pan, tilt;
        ViewCamera::cameraFromEye(0.f, 0.f, 0.f, 0.f, -1.f, 0.f, &distance, &pan, &tilt);
        QCOMPARE(pan, 0.f);
        QVERIFY(std::fabs(tilt - 90.f) < 1e-3f);
        ViewCamera::cameraFromEye(1.f, 1.f, 1.f, 1.f, 1.f, 1.f, &distance, &pan, &tilt);
        QVERIFY(!std::isnan(pan) && !std::isnan(tilt));
    }

    void triangleTableHasAllSixtyFourEntries()
    {
        const std::set<int> none = {0, 1, 2, 4, 8, 12, 16, 18, 32, 33};
        const std::set<int> t321 = {3, 5, 6, 7}, t320 = {9, 17, 24, 25}, t310 = {10, 34, 40, 42},
                            t210 = {20, 36, 48, 52};
        for (int mask = 0; mask < 64; ++mask) {
            int out[2][3] = {};
            const int n = TriangleTable::triangles(mask, out);
            const auto is = [&](int t, int a, int b, int c) { return out[t][0] == a && out[t][1] == b && out[t][2] == c; };
            const QByteArray m = QByteArray::number(mask);
            if (none.count(mask)) {
                QVERIFY2(n == 0, m);
            } else if (t321.count(mask)) {
                QVERIFY2(n == 1 && is(0, 3, 2, 1), m);
            } else if (t320.count(mask)) {
                QVERIFY2(n == 1 && is(0, 3, 2, 0), m);
            } else if (t310.count(mask)) {
                QVERIFY2(n == 1 && is(0, 3, 1, 0), m);
            } else if (t210.count(mask)) {
                QVERIFY2(n == 1 && is(0, 2, 1, 0), m);
            } else {
                QVERIFY2(n == 2 && is(0, 2, 1, 0) && is(1, 3, 2, 0), m);
            }
        }
        int out[2][3];
        QCOMPARE(TriangleTable::triangles(64, out), 0);
        QCOMPARE(TriangleTable::triangles(-1, out), 0);
    }

    // Lighting needs unit normals on the outer side of every solid; the triangles' winding must agree
    // with them. The axes lie along x, y and z, so "outer" is away from the axis a vertex belongs to.
    void axisNormalsFaceOutwards()
    {
        AxisMesh mesh;
        mesh.build(1000.f);
        const std::vector<float>& p = mesh.positions();
        const std::vector<float>& n = mesh.normals();
        QCOMPARE(mesh.vertexCount(), 3 * 3 * 3 * AxisMesh::Segments); // shaft, head and base per axis
        for (int t = 0; t < mesh.vertexCount() / 3; ++t) {
            const float* a = &p[9 * t];
            const float* b = a + 3;
            const float* c = a + 6;
            const float e1[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
            const float e2[3] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
            const float face[3] = {e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2],
                                   e1[0] * e2[1] - e1[1] * e2[0]};
            const float faceLength = std::sqrt(face[0] * face[0] + face[1] * face[1] + face[2] * face[2]);
            for (int k = 0; k < 3; ++k) {
                const float* normal = &n[9 * t + 3 * k];
                const float length = std::sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
                QVERIFY2(std::fabs(length - 1.f) < 1e-4f, qPrintable(QString::number(t)));
                // Within half a segment (11.25 degrees) of the face's own normal, plus rounding.
                const float cosine = (face[0] * normal[0] + face[1] * normal[1] + face[2] * normal[2]) / faceLength;
                QVERIFY2(cosine > 0.975f, qPrintable(QString("%1: %2").arg(t).arg(cosine)));
            }
            // The axis of this triangle is the coordinate its vertices share the most of; the side
            // normals point away from it.
            const float* vertex = a + 3 * 0;
            const float* normal = &n[9 * t];
            const int along = t / (3 * AxisMesh::Segments);
            float radial = 0.f;
            for (int i = 0; i < 3; ++i)
                radial += i == along ? 0.f : vertex[i] * normal[i];
            QVERIFY2(radial >= 0.f, qPrintable(QString::number(t)));
        }
    }

    void cellMasks()
    {
        const float flat[4] = {1.f, 1.f, 1.f, 1.f};
        QCOMPARE(TriangleTable::cellMask(flat), 63);
        const float oneMissing[4] = {1.f, 0.f, 1.f, 1.f}; // corner 1 has no measurement
        QCOMPARE(TriangleTable::cellMask(oneMissing), 16 | 8 | 1);
        const float twoMissing[4] = {1.f, 0.f, 0.f, 1.f};
        QCOMPARE(TriangleTable::cellMask(twoMissing), -1);
        const float negative[4] = {-1.f, 1.f, 1.f, 1.f};
        QCOMPARE(TriangleTable::cellMask(negative), 4 | 2 | 1);
        // A step of exactly 0.1 is not bridged; a hair less is.
        const float step[4] = {0.2f, 0.1f, 0.1f, 0.2f};
        QCOMPARE(TriangleTable::cellMask(step), 8 | 4);
        const float smallStep[4] = {0.2f, 0.10001f, 0.10001f, 0.2f};
        QCOMPARE(TriangleTable::cellMask(smallStep), 63);
    }

    void mouseMovesTheCamera()
    {
        BufferData points(nullptr, BufferData::VerticesFloatingPoint);
        DisplayWidget w;
        w.setContext(&own);
        w.setBuffer(&points);
        QVERIFY(w.is3D());
        QCOMPARE(w.unitScale(), 1.f);
        w.resize(400, 300);
        w.setCamera(0.f, 0.f, 0.5f, 1.f, 10.f, 0.f);

        // Left drag: both angles by 90 degrees per widget height.
        sendMouse(&w, QEvent::MouseButtonPress, {100, 100}, Qt::LeftButton, Qt::LeftButton);
        sendMouse(&w, QEvent::MouseMove, {130, 70}, Qt::NoButton, Qt::LeftButton);
        Camera c = cameraOf(w);
        QVERIFY(std::fabs(c.pan - (10.f - 30.f * 90.f / 300.f)) < 1e-4f);
        QVERIFY(std::fabs(c.tilt - 30.f * 90.f / 300.f) < 1e-4f);
        QCOMPARE(w.mousePosition(), QPoint(130, 70));
        // Pan wraps into 0..360, tilt stops at 90.
        sendMouse(&w, QEvent::MouseMove, {160, -300}, Qt::NoButton, Qt::LeftButton);
        c = cameraOf(w);
        QVERIFY(std::fabs(c.pan - (1.f - 30.f * 90.f / 300.f + 360.f)) < 1e-3f);
        QCOMPARE(c.tilt, 90.f);
        // With Ctrl held the left drag does not turn the camera.
        sendMouse(&w, QEvent::MouseMove, {260, -200}, Qt::NoButton, Qt::LeftButton, Qt::ControlModifier);
        QCOMPARE(cameraOf(w).pan, c.pan);
        sendMouse(&w, QEvent::MouseButtonRelease, {260, -200}, Qt::LeftButton, Qt::NoButton);

        // Right drag moves the eye 3 units per widget height, never closer than 0.05.
        sendMouse(&w, QEvent::MouseButtonPress, {10, 100}, Qt::RightButton, Qt::RightButton);
        sendMouse(&w, QEvent::MouseMove, {10, 130}, Qt::NoButton, Qt::RightButton);
        QVERIFY(std::fabs(cameraOf(w).distance - 1.3f) < 1e-5f);
        sendMouse(&w, QEvent::MouseMove, {10, -1000}, Qt::NoButton, Qt::RightButton);
        QCOMPARE(cameraOf(w).distance, 0.05f);
        sendMouse(&w, QEvent::MouseButtonRelease, {10, -1000}, Qt::RightButton, Qt::NoButton);

        // The wheel: one notch (120) is 1/24 of a unit.
        w.setCamera(0.f, 0.f, 0.5f, 1.f, 0.f, 0.f);
        sendWheel(&w, 120);
        QVERIFY(std::fabs(cameraOf(w).distance - (1.f - 120.f / 2880.f)) < 1e-6f);
        sendWheel(&w, 100000);
        QCOMPARE(cameraOf(w).distance, 0.05f);

        // While a reload is pending the handlers leave the camera alone.
        w.setCamera(0.f, 0.f, 0.5f, 1.f, 0.f, 0.f);
        w.setReload(true);
        sendWheel(&w, 120);
        sendMouse(&w, QEvent::MouseButtonPress, {100, 100}, Qt::LeftButton, Qt::LeftButton);
        sendMouse(&w, QEvent::MouseMove, {150, 150}, Qt::NoButton, Qt::LeftButton);
        sendMouse(&w, QEvent::MouseButtonDblClick, {150, 150}, Qt::LeftButton, Qt::LeftButton);
        c = cameraOf(w);
        QVERIFY(c.distance == 1.f && c.pan == 0.f && c.tilt == 0.f);
        w.setReload(false);

        // A double click loads preset 0 from the settings.
        Settings::setCameraTargetX(0, 0.25f);
        Settings::setCameraTargetDistance(0, 2.f);
        Settings::setCameraPan(0, 45.f);
        sendMouse(&w, QEvent::MouseButtonDblClick, {150, 150}, Qt::LeftButton, Qt::LeftButton);
        c = cameraOf(w);
        QVERIFY(c.x == 0.25f && c.z == 0.5f && c.distance == 2.f && c.pan == 45.f && c.tilt == 0.f);
    }

    void depthSamplesArePaintedThroughThePalette()
    {
        NodeData* depth = fixture.depth;
        BufferData* map = depth->buffer(BufferData::Depth);
        EventsFixture::enable(depth, "enableDepthMap");
        fixture.manager->registerNode(depth, true);
        fixture.manager->addDisplayedBuffer(map);
        fixture.manager->startNodes();

        CameraViewContext context(fixture.manager);
        DisplayWidget w;
        w.setContext(&context);
        w.setBuffer(map);
        QVERIFY(!w.is3D());
        show(w, QSize(640, 480));
        QSignalSpy displayed(&w, &DisplayWidget::displayed);

        QVERIFY(isFilled(grab(w), 255, 0, 0)); // nothing received yet
        step(map, 1);
        QVERIFY(isFilled(grab(w), 255, 0, 0)); // the completed slot is still the empty one
        QCOMPARE(w.uploadCount(), 0);
        QCOMPARE(displayed.count(), 0);

        step(map, 2);
        QImage frame = grab(w);
        const int slot = map->readSlot();
        QCOMPARE(map->image[slot].width, 640u);
        const auto* words = reinterpret_cast<const quint32*>(map->image[slot].pixels);
        std::set<QRgb> colours;
        for (int y = 3; y < 480; y += 37) {
            for (int x = 5; x < 640; x += 41) {
                const quint32 word = words[y * 640 + x];
                QVERIFY2(near(at(frame, x, y), word & 0xFF, (word >> 8) & 0xFF, (word >> 16) & 0xFF, 0),
                         qPrintable(QStringLiteral("%1,%2 %3").arg(x).arg(y).arg(describe(at(frame, x, y)))));
                colours.insert(frame.pixel(x, y));
            }
        }
        QVERIFY(colours.size() > 5); // a scene, not one flat colour
        QVERIFY(displayed.count() >= 1);

        // One upload per completed sample, however often the view repaints.
        QCOMPARE(w.uploadCount(), 1);
        for (int i = 0; i < 4; ++i)
            grab(w);
        QCOMPARE(w.uploadCount(), 1);
        step(map, 3);
        grab(w);
        grab(w);
        QCOMPARE(w.uploadCount(), 2);
        step(map, 4);
        grab(w);
        QCOMPARE(w.uploadCount(), 3);
        QVERIFY(w.repaintCount() >= 10);
        w.clearRepaintCount();
        QCOMPARE(w.repaintCount(), 0);

        // Mirrored: widget column x shows image column 639 - x, without another upload.
        w.setMirror(true);
        frame = grab(w);
        const int mirrorSlot = map->readSlot();
        const auto* mirrored = reinterpret_cast<const quint32*>(map->image[mirrorSlot].pixels);
        for (int x = 0; x < 640; x += 13) {
            const quint32 word = mirrored[100 * 640 + (639 - x)];
            QVERIFY2(near(at(frame, x, 100), word & 0xFF, (word >> 8) & 0xFF, (word >> 16) & 0xFF, 0),
                     qPrintable(QString::number(x)));
        }
        QCOMPARE(w.uploadCount(), 3);

        // A full reload uploads the same slot again.
        w.setReload(true);
        grab(w);
        QCOMPARE(w.uploadCount(), 4);
        QVERIFY(!w.reload());

        // Stopped: mid grey.
        fixture.manager->stopNodes();
        QCOMPARE(fixture.manager->streamingState(), int(CameraManager::Stopped));
        QVERIFY(isFilled(grab(w), 128, 128, 128, 1));
        checkNoGlError(w);
        fixture.manager->removeDisplayedBuffer(map);
        fixture.manager->registerNode(depth, false);
    }

    void colourImageWithOverlays()
    {
        HandMadeRecords records;
        BufferData* image = records.image;
        completeSlot(image, 1, 4, 4);
        fillBgr(image, 1, 0xF0, 0x80, 0x10);
        own.values.roiColor = 0x0000FF;

        DisplayWidget w;
        w.setContext(&own);
        w.setBuffer(image);
        show(w, QSize(320, 240));
        QVERIFY(isFilled(grab(w), 0xF0, 0x80, 0x10, 0)); // B, G, R bytes shown as a colour

        // The view reaches the program only through its context: each paint reads under the buffers
        // lock, takes the preferences once, and tells its display time against the context's reference.
        QSignalSpy displayed(&w, &DisplayWidget::displayed);
        const int paints = w.repaintCount(), reads = own.preferenceReads, locks = own.buffersLocked;
        own.referenceTime = Zerlane::Utils::Clock::now();
        grab(w);
        const int painted = w.repaintCount() - paints;
        QVERIFY(painted >= 1);
        QCOMPARE(own.preferenceReads - reads, painted);
        QCOMPARE(own.buffersLocked - locks, painted);
        QVERIFY(!displayed.isEmpty());
        const qint64 shownAt = displayed.last().first().toLongLong();
        QVERIFY2(shownAt >= 0 && shownAt < 10000000, qPrintable(QString::number(shownAt)));

        // ROI of image pixels (0,0)..(1,1): filled at alpha 0.2, outlined at alpha 1.
        records.colour->setRoi({0, 0, 2, 2});
        QImage frame = grab(w);
        QVERIFY2(near(at(frame, 80, 60), int(0.8 * 0xF0), int(0.8 * 0x80), int(0.8 * 0x10 + 0.2 * 255), 2),
                 qPrintable(describe(at(frame, 80, 60))));
        QVERIFY(near(at(frame, 240, 180), 0xF0, 0x80, 0x10, 0));
        bool outlined = false;
        for (int x = 156; x <= 163; ++x)
            outlined = outlined || near(at(frame, x, 60), 0, 0, 255, 0);
        QVERIFY(outlined);

        // Without an ROI the picture is clean again.
        records.colour->setRoi({});
        QVERIFY(isFilled(grab(w), 0xF0, 0x80, 0x10, 0));

        // The cross-hair inverts what lies under it, and is hidden while an ROI is being drawn.
        QEnterEvent enter(QPointF(100, 50), QPointF(100, 50), QPointF(w.mapToGlobal(QPoint(100, 50))));
        QCoreApplication::sendEvent(&w, &enter);
        sendMouse(&w, QEvent::MouseMove, {100, 50}, Qt::NoButton, Qt::NoButton);
        QVERIFY(w.mouseInside());
        frame = grab(w);
        QVERIFY2(near(at(frame, 100, 200), 0x0F, 0x7F, 0xEF, 0), qPrintable(describe(at(frame, 100, 200))));
        QVERIFY2(near(at(frame, 10, 50), 0x0F, 0x7F, 0xEF, 0), qPrintable(describe(at(frame, 10, 50))));
        QVERIFY(near(at(frame, 101, 51), 0xF0, 0x80, 0x10, 0));
        w.setSelecting(true);
        QVERIFY(isFilled(grab(w), 0xF0, 0x80, 0x10, 0));
        w.setSelecting(false);
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&w, &leave);
        QVERIFY(!w.mouseInside());
        QVERIFY(isFilled(grab(w), 0xF0, 0x80, 0x10, 0));
        checkNoGlError(w);
    }

    void greyAndRedStates()
    {
        HandMadeRecords records;
        BufferData deviation(records.depth, BufferData::StandardDeviation);
        DisplayWidget w;
        w.setContext(&own);
        w.setBuffer(&deviation);
        show(w, QSize(320, 240));
        QVERIFY(isFilled(grab(w), 128, 128, 128, 1)); // no ROI selected
        records.depth->setRoi({0, 0, 8, 8});
        QVERIFY(isFilled(grab(w), 255, 0, 0)); // ROI, but no statistics yet
        completeSlot(&deviation, 0, 8, 8);
        std::fill_n(reinterpret_cast<quint32*>(deviation.image[0].pixels), 64, 0xFF00FF00u);
        QVERIFY(isFilled(grab(w), 0, 255, 0, 0));
        own.stopped = true;
        QVERIFY(isFilled(grab(w), 128, 128, 128, 1)); // stopped: grey, whatever the slot holds
        own.stopped = false;
        QVERIFY(isFilled(grab(w), 0, 255, 0, 0));
        w.setBuffer(nullptr);
        QVERIFY(isFilled(grab(w), 255, 0, 0));
    }

    void audioMarker()
    {
        HandMadeRecords records;
        BufferData sound(records.depth, BufferData::Audio);
        completeSlot(&sound, 0, 1280, 256);
        sound.width[0] = sound.height[0] = 0; // the audio writer leaves the frame size unset
        std::fill_n(reinterpret_cast<quint32*>(sound.image[0].pixels), 1280 * 256, 0xFF000040u);
        sound.audioMarker[0] = 640;
        records.depth->setRoi({0, 0, 100, 100}); // not drawn over audio
        DisplayWidget w;
        w.setContext(&own);
        w.setBuffer(&sound);
        show(w, QSize(320, 240));
        const QImage frame = grab(w);
        QVERIFY2(near(at(frame, 160, 10), 255, 255, 255, 0), qPrintable(describe(at(frame, 160, 10))));
        QVERIFY(near(at(frame, 158, 10), 0x40, 0, 0, 0));
        QVERIFY(near(at(frame, 10, 10), 0x40, 0, 0, 0));
    }

    void uvTrianglesCoverTheGrid()
    {
        HandMadeRecords records;
        completeSlot(records.image, 1, 8, 8);
        fillBgr(records.image, 1, 0x20, 0xC0, 0x40);
        completeSlot(records.vertices, 1, 3, 3);
        completeSlot(records.uv, 1, 3, 3);
        own.values.displayAxis = false;
        own.values.displayTriangles = true;
        own.values.backgroundColor = 0x000080;

        DisplayWidget w;
        w.setContext(&own);
        w.setBuffer(records.uv);
        QVERIFY(w.is3D());
        w.loadCameraPreset(Settings::Front); // eye at the origin, looking along +z
        show(w, QSize(320, 240));

        // Grid points at x, y in {-0.2, 0, 0.2} per metre of depth: wherever their z, they land on
        // the same pixels, the grid covering about x 113..207 and y 73..167 of the widget.
        const auto setGrid = [&](const float z[9]) {
            auto* xyz = reinterpret_cast<float*>(records.vertices->data[1]);
            auto* uv = reinterpret_cast<float*>(records.uv->data[1]);
            for (int i = 0; i < 9; ++i) {
                xyz[3 * i] = 0.2f * float(i % 3 - 1) * z[i];
                xyz[3 * i + 1] = 0.2f * float(i / 3 - 1) * z[i];
                xyz[3 * i + 2] = z[i];
                uv[2 * i] = 0.5f;
                uv[2 * i + 1] = 0.5f;
            }
        };
        // Cells: top-left, top-right, bottom-left, bottom-right; points inside near each corner.
        const QPoint topRightNearCorner1(200, 80), topRightNearCorner3(165, 115);
        const auto covered = [&](const QImage& frame, QPoint p) { return near(at(frame, p.x(), p.y()), 0x20, 0xC0, 0x40, 0); };
        const auto background = [&](const QImage& frame, QPoint p) { return near(at(frame, p.x(), p.y()), 0, 0, 0x80, 0); };

        const float flat[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
        setGrid(flat);
        QImage frame = grab(w);
        for (QPoint p : {QPoint(136, 96), QPoint(183, 96), QPoint(136, 143), QPoint(183, 143), topRightNearCorner1})
            QVERIFY2(covered(frame, p), qPrintable(describe(at(frame, p.x(), p.y()))));
        QVERIFY(background(frame, {20, 20}));
        QVERIFY(background(frame, {160, 200}));

        // Top-right grid point without measurement: its cell keeps only triangle (3, 2, 0).
        const float missing[9] = {1, 1, 0, 1, 1, 1, 1, 1, 1};
        setGrid(missing);
        frame = grab(w);
        QVERIFY(background(frame, topRightNearCorner1));
        QVERIFY(covered(frame, topRightNearCorner3));
        QVERIFY(covered(frame, {136, 96}));

        // The right column steps by exactly 0.1 in z: the right cells are not bridged.
        const float step[9] = {0.2f, 0.2f, 0.1f, 0.2f, 0.2f, 0.1f, 0.2f, 0.2f, 0.1f};
        setGrid(step);
        frame = grab(w);
        QVERIFY(covered(frame, {136, 96}));
        QVERIFY(covered(frame, {136, 143}));
        QVERIFY(background(frame, {183, 96}));
        QVERIFY(background(frame, {183, 143}));
        const float smallStep[9] = {0.2f, 0.2f, 0.10001f, 0.2f, 0.2f, 0.10001f, 0.2f, 0.2f, 0.10001f};
        setGrid(smallStep);
        QVERIFY(covered(grab(w), {183, 96}));

        // Texture coordinates off the colour image show the non-mapped colour.
        if (w.borderClamp()) {
            own.values.nonMappedUvPixelsColor = 0xFF00FF;
            setGrid(flat);
            auto* uv = reinterpret_cast<float*>(records.uv->data[1]);
            for (int i = 0; i < 18; ++i)
                uv[i] = 2.f;
            frame = grab(w);
            QVERIFY2(near(at(frame, 136, 96), 255, 0, 255, 0), qPrintable(describe(at(frame, 136, 96))));
        }

        // Points mode draws the nine points only.
        setGrid(flat);
        own.values.displayTriangles = false;
        own.values.dotSize = 3;
        frame = grab(w);
        QVERIFY(background(frame, {136, 96}));
        int lit = 0;
        for (int y = 0; y < 240; ++y)
            for (int x = 0; x < 320; ++x)
                lit += covered(frame, {x, y}) ? 1 : 0;
        QVERIFY2(lit >= 9 && lit <= 9 * 16, qPrintable(QString::number(lit)));
        checkNoGlError(w);
    }

    void mirrorAndPickIn3D()
    {
        HandMadeRecords records;
        completeSlot(records.vertices, 0, 3, 3);
        completeSlot(records.uv, 0, 3, 3);
        auto* xyz = reinterpret_cast<float*>(records.vertices->data[0]);
        std::fill_n(reinterpret_cast<float*>(records.uv->data[0]), 18, 0.5f);
        for (int i = 0; i < 9; ++i) {
            xyz[3 * i] = 0.2f * float(i % 3 - 1);
            xyz[3 * i + 1] = 0.2f * float(i / 3 - 1);
            xyz[3 * i + 2] = i == 2 ? 0.f : 1.f;
        }
        own.values.displayTriangles = true;
        own.values.displayAxis = false; // the axes start at the eye here: they would be picked
        DisplayWidget w;
        w.setContext(&own);
        w.setBuffer(records.uv);
        w.loadCameraPreset(Settings::Front);
        show(w, QSize(320, 240));

        // The missing top-right corner shows at the top left when mirrored.
        QImage frame = grab(w);
        QVERIFY(isLit(frame, {120, 80}) && !isLit(frame, {200, 80}));
        w.setMirror(true);
        frame = grab(w);
        QVERIFY(!isLit(frame, {120, 80}) && isLit(frame, {200, 80}));
        w.setMirror(false);
        grab(w);

        // Shift-click picks the surface point under the pointer; the eye stays where it was.
        const Camera before = cameraOf(w);
        float ex, ey, ez;
        ViewCamera::eyeFromCamera(before.x, before.y, before.z, before.distance, before.pan, before.tilt, &ex, &ey, &ez);
        sendMouse(&w, QEvent::MouseButtonPress, {140, 140}, Qt::LeftButton, Qt::LeftButton, Qt::ShiftModifier);
        const Camera after = cameraOf(w);
        QVERIFY2(std::fabs(after.z - 1.f) < 0.01f, qPrintable(QString::number(after.z)));
        QVERIFY(after.x < 0.f && after.y > 0.f); // left of and below the centre
        float ax, ay, az;
        ViewCamera::eyeFromCamera(after.x, after.y, after.z, after.distance, after.pan, after.tilt, &ax, &ay, &az);
        QVERIFY(std::fabs(ax - ex) < 1e-3f && std::fabs(ay - ey) < 1e-3f && std::fabs(az - ez) < 1e-3f);
        // Nothing under the pointer: the camera stays.
        sendMouse(&w, QEvent::MouseButtonPress, {5, 5}, Qt::LeftButton, Qt::LeftButton, Qt::ShiftModifier);
        QCOMPARE(cameraOf(w).z, after.z);

        // The axes, seen from aside: lit red solids at the origin.
        own.values.displayAxis = true;
        w.setCamera(0.f, 0.f, 0.f, 0.4f, 30.f, 20.f);
        auto redPixels = [&](const QImage& image) {
            int red = 0;
            for (int y = 0; y < 240; ++y)
                for (int x = 0; x < 320; ++x)
                    red += (at(image, x, y).red() > 40 && at(image, x, y).green() < 10 && at(image, x, y).blue() < 10);
            return red;
        };
        const int aside = redPixels(grab(w));
        QVERIFY2(aside > 100, qPrintable(QString::number(aside)));
        // From the front preset the eye sits at the origin and looks along z: the axes are a small spot
        // in the middle of the view, not a disc over the points.
        w.loadCameraPreset(Settings::Front);
        frame = grab(w);
        const int ahead = redPixels(frame);
        QVERIFY2(ahead > 0 && ahead < 320 * 240 / 50, qPrintable(QString::number(ahead)));
        QVERIFY(at(frame, 160, 120).red() > 40 && at(frame, 160, 120).green() < 10);
        checkNoGlError(w);
    }

    void newContextAfterReparenting()
    {
        HandMadeRecords records;
        completeSlot(records.image, 0, 4, 4);
        fillBgr(records.image, 0, 0x11, 0x22, 0x33);
        auto* w = new DisplayWidget;
        w->setContext(&own);
        w->setBuffer(records.image);
        show(*w, QSize(320, 240));
        QVERIFY(isFilled(grab(*w), 0x11, 0x22, 0x33, 0));
        QCOMPARE(w->uploadCount(), 1);

        QSignalSpy contextGone(w->context(), &QOpenGLContext::aboutToBeDestroyed);
        QWidget window;
        window.resize(400, 300);
        w->setParent(&window);
        w->setGeometry(0, 0, 320, 240);
        w->show();
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(isFilled(grab(*w), 0x11, 0x22, 0x33, 0));
        QCOMPARE(contextGone.count(), 1); // a new window, a new context: the image is uploaded again
        QCOMPARE(w->uploadCount(), 2);
        checkNoGlError(*w);
        delete w;
    }

private:
    void show(DisplayWidget& w, QSize size)
    {
        w.resize(size);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
    }

    static QImage grab(DisplayWidget& w) { return w.grabFramebuffer().convertToFormat(QImage::Format_RGB32); }

    static bool isFilled(const QImage& frame, int r, int g, int b, int tolerance = 0)
    {
        for (int y = 0; y < frame.height(); y += 7) {
            for (int x = 0; x < frame.width(); x += 7) {
                if (!near(at(frame, x, y), r, g, b, tolerance)) {
                    qWarning() << "pixel" << x << y << describe(at(frame, x, y));
                    return false;
                }
            }
        }
        return true;
    }

    static bool isLit(const QImage& frame, QPoint p) { return at(frame, p.x(), p.y()) != QColor(Qt::black); }

    static void checkNoGlError(DisplayWidget& w)
    {
        w.makeCurrent();
        const GLenum error = glGetError();
        w.doneCurrent();
        QCOMPARE(error, GLenum(GL_NO_ERROR));
    }

    // Steps the simulated camera until the buffer has received `frames` samples.
    void step(BufferData* buffer, int frames)
    {
        Zerlane::Sim::Control::step(1);
        QVERIFY(ViewerTest::waitFor([buffer, frames] { return buffer->frameCount >= frames; }));
        QCoreApplication::processEvents();
    }

    EventsFixture fixture;
    TestViewContext own;
};

QTEST_MAIN(TestDisplayWidget)
#include "tst_displaywidget.moc"
