// The simulated camera's colour renderer on its own, at chosen times: the room's pictures exactly as they
// always were.
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
                renderer.render(configuration, {}, sim::Scene::Kind::Room, e.time, picture.data());
                const uint64_t actual = checksum(picture.data(), picture.size());
                QVERIFY2(actual == e.checksum, qPrintable(QString("%1 %2 at %3 s: checksum %4")
                                                              .arg(FrameFormat_toString(stream.format).c_str())
                                                              .arg(CompressionType_toString(stream.compression).c_str())
                                                              .arg(e.time)
                                                              .arg(actual, 16, 16, QChar('0'))));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestColorRenderer)
#include "tst_colorrenderer.moc"
