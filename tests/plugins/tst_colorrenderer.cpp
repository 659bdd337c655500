// The simulated camera's colour renderer on its own, at chosen times: the room's pictures exactly as they
// always were, and the scene it is given pictured, static parts cached per scene.
#include "Checksum.h"

#include "sdk/plugins/ColorRenderer.h"

#include <QtTest>

#include <vector>

using namespace Zerlane;
using Zerlane::sim::ColorRenderer;

namespace {

ColorNodeConfiguration configurationOf(FrameFormat format, CompressionType compression)
{
    ColorNodeConfiguration c;
    c.frameFormat = format;
    c.compression = compression;
    c.frameRate = 30;
    return c;
}

using Kind = sim::Scene::Kind;

std::vector<uint8_t> picture(ColorRenderer& renderer, const ColorNodeConfiguration& configuration, Kind kind,
                             double time)
{
    std::vector<uint8_t> bytes(ColorRenderer::frameBytes(configuration));
    renderer.render(configuration, {}, kind, time, bytes.data());
    return bytes;
}

// Pixels of two B, G, R pictures of 640 x 480 that differ, in the whole picture and in its lower left
// corner (the bare desk of the close-range scene, where the hand and its arm never go).
struct Difference {
    int pixels = 0;
    int bareDesk = 0;
};

Difference differenceOf(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b)
{
    Difference d;
    for (int y = 0; y < 480; ++y) {
        for (int x = 0; x < 640; ++x) {
            const std::size_t i = (std::size_t(y) * 640 + std::size_t(x)) * 3;
            const bool differs = a[i] != b[i] || a[i + 1] != b[i + 1] || a[i + 2] != b[i + 2];
            d.pixels += differs;
            d.bareDesk += differs && x < 100 && y >= 420;
        }
    }
    return d;
}

} // namespace

class TestColorRenderer : public QObject {
    Q_OBJECT

private slots:
    void roomPicturesAreAsBefore()
    {
        // As the colour camera pictured the room before the close-range scene came, one renderer per
        // encoding and size so that its cached room image serves the later times.
        struct Expected {
            double time;
            uint64_t checksum;
        };
        struct Stream {
            FrameFormat format;
            CompressionType compression;
            Expected pictures[3];
        };
        const Stream streams[] = {
            {FRAME_FORMAT_VGA, COMPRESSION_TYPE_NONE,
             {{0.0, 0x059ad923a2b4621bull}, {2.5, 0x18e3b942e2ddf032ull}, {51.735, 0xd67cf706b43c0d46ull}}},
            {FRAME_FORMAT_HD720, COMPRESSION_TYPE_NONE,
             {{0.0, 0x77a4b0bde8d68c3eull}, {2.5, 0x7065cef27ca6e0b3ull}, {51.735, 0x048fcc59a311cf39ull}}},
            {FRAME_FORMAT_VGA, COMPRESSION_TYPE_YUY2,
             {{0.0, 0x90ec0bd1de3f5f3bull}, {2.5, 0x04e0dbb2c9f5eeb7ull}, {51.735, 0x0a3acb4c3d4ad5a4ull}}},
            {FRAME_FORMAT_HD720, COMPRESSION_TYPE_YUY2,
             {{0.0, 0xcf0638a8538edc9cull}, {2.5, 0x3bbdaae436bef309ull}, {51.735, 0xa00067297c35f817ull}}},
        };
        for (const Stream& stream : streams) {
            const ColorNodeConfiguration configuration = configurationOf(stream.format, stream.compression);
            std::vector<uint8_t> picture(ColorRenderer::frameBytes(configuration));
            ColorRenderer renderer;
            for (const Expected& e : stream.pictures) {
                renderer.render(configuration, {}, Kind::Room, e.time, picture.data());
                const uint64_t actual = checksum(picture.data(), picture.size());
                QVERIFY2(actual == e.checksum, qPrintable(QString("%1 %2 at %3 s: checksum %4")
                                                              .arg(FrameFormat_toString(stream.format).c_str())
                                                              .arg(CompressionType_toString(stream.compression).c_str())
                                                              .arg(e.time)
                                                              .arg(actual, 16, 16, QChar('0'))));
            }
        }
    }

    void thePictureFollowsTheScene()
    {
        // A renderer that goes back and forth between the scenes pictures each as a fresh one does (its
        // cached static picture follows the scene), in both encodings.
        const std::pair<Kind, double> history[] = {{Kind::Room, 1.0}, {Kind::Desk, 1.0}, {Kind::Desk, 4.0},
                                                   {Kind::Room, 4.0}, {Kind::Desk, 2.0}};
        for (CompressionType compression : {COMPRESSION_TYPE_NONE, COMPRESSION_TYPE_YUY2}) {
            const ColorNodeConfiguration configuration = configurationOf(FRAME_FORMAT_VGA, compression);
            ColorRenderer travelled;
            for (const auto& [kind, time] : history) {
                ColorRenderer fresh;
                QVERIFY2(picture(travelled, configuration, kind, time) == picture(fresh, configuration, kind, time),
                         qPrintable(QString("scene %1 at %2 s").arg(int(kind)).arg(time)));
            }
        }

        // The desk is another picture than the room; its hand moves while the bare desk stays.
        const ColorNodeConfiguration bgr = configurationOf(FRAME_FORMAT_VGA, COMPRESSION_TYPE_NONE);
        ColorRenderer renderer;
        const std::vector<uint8_t> room = picture(renderer, bgr, Kind::Room, 1.0);
        const std::vector<uint8_t> desk = picture(renderer, bgr, Kind::Desk, 1.0);
        QVERIFY(differenceOf(room, desk).pixels > 640 * 480 * 3 / 4);
        for (double time : {1.5, 4.0}) {
            const Difference moved = differenceOf(desk, picture(renderer, bgr, Kind::Desk, time));
            QVERIFY2(moved.pixels > 640 * 480 / 100 && moved.bareDesk == 0,
                     qPrintable(QString("%1 %2 at %3 s").arg(moved.pixels).arg(moved.bareDesk).arg(time)));
        }
    }
};

QTEST_GUILESS_MAIN(TestColorRenderer)
#include "tst_colorrenderer.moc"
