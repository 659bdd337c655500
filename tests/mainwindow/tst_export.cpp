// Export of a paused depth frame: the CSV bytes for every kind of buffer, the header written once,
// nothing for switched-off maps; the PLY point cloud parsed back; files that cannot be created or
// filled.

#include "app/shared/TextUtils.h"
#include "camera/DepthNodeData.h"
#include "events/EventsFixture.h"
#include "mainwindow/FrameExport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>

namespace {

// Puts a frame of `width` x `height` into the buffer's displayed slot.
template <class T>
void fill(BufferData* buffer, uint32_t width, uint32_t height, const std::vector<T>& values)
{
    const int slot = buffer->readSlot();
    buffer->width[slot] = width;
    buffer->height[slot] = height;
    std::memcpy(buffer->data[slot], values.data(), values.size() * sizeof(T));
}

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

} // namespace

class TestExport : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        fixture.start(false);
        QVERIFY(directory.isValid());
    }

    void cleanupTestCase() { fixture.stop(); }

    void csvWritesEveryEnabledMapAsItsKindPrescribes()
    {
        NodeData* depth = fixture.depth;
        const QString path = directory.filePath("frame.csv");

        // Every map switched off: an empty file, not even the header.
        QCOMPARE(FrameExport::writeCsv(path, depth, fixture.manager), FrameExport::Result::Written);
        QCOMPARE(contentsOf(path), QByteArray());

        fixture.manager->setReferenceTime(1000000);
        BufferData* phase = depth->buffer(BufferData::Phase);
        const int slot = phase->readSlot();
        phase->timeOfCapture[slot] = 3500000;
        phase->timeOfArrival[slot] = 3600001;
        phase->timeOfEvent[slot] = 3700002;
        static_cast<DepthNodeData*>(depth)->setAcceleration({0.5f, -1.f, 0.25f});
        fill<int16_t>(phase, 2, 2, {1, -32766, 3, 4});
        fill<int16_t>(depth->buffer(BufferData::Confidence), 1, 1, {7});
        fill<int16_t>(depth->buffer(BufferData::Depth), 2, 1, {1234, 32002});
        fill<float>(depth->buffer(BufferData::DepthFloatingPoint), 1, 2, {1.5f, -2.f});
        fill<int16_t>(depth->buffer(BufferData::Vertices), 1, 1, {-10, 20, 3000});
        fill<float>(depth->buffer(BufferData::VerticesFloatingPoint), 1, 1, {0.125f, -0.5f, 2.f});
        fill<float>(depth->buffer(BufferData::UV), 2, 1, {0.25f, 0.75f, -1.f, -1.f});
        fill<float>(depth->buffer(BufferData::StandardDeviation), 2, 1, {0.f, 0.f});
        for (const char* map : {"enablePhaseMap", "enableConfidenceMap", "enableDepthMap", "enableDepthMapFloatingPoint",
                                "enableVertices", "enableVerticesFloatingPoint", "enableUvMap"})
            EventsFixture::enable(depth, map);

        QCOMPARE(FrameExport::writeCsv(path, depth, fixture.manager), FrameExport::Result::Written);
        const QByteArray expected = QByteArray("Time of capture;") + timeText(qint64(2500000)).toLatin1() + "\n"
                                    + "Time of arrival;" + timeText(qint64(2600001)).toLatin1() + "\n"
                                    + "Time of event;" + timeText(qint64(2700002)).toLatin1() + "\n"
                                    + "Acceleration;0.500000;-1.000000;0.250000\n"
                                    + "Phase;1;-32766\n;3;4\n"
                                    + "Confidence;7\n"
                                    + "Depth;1234;32002\n"
                                    + "Depth Floating Point;1.500000\n;-2.000000\n"
                                    + "Vertices;-10;20;3000\n"
                                    + "Vertices Floating Point;0.125000;-0.500000;2.000000\n"
                                    + "UV;0.250000;0.750000;-1.000000;-1.000000\n"
                                    + "Standard Deviation\n";
        QCOMPARE(contentsOf(path), expected);

        // A buffer of height 0 writes neither rows nor its name; the header goes with the first written.
        fill<int16_t>(phase, 2, 0, {});
        QVERIFY(FrameExport::writeCsv(path, depth, fixture.manager) == FrameExport::Result::Written);
        const QByteArray written = contentsOf(path);
        QVERIFY(!written.contains("Phase"));
        QVERIFY(written.startsWith("Time of capture;"));
        QCOMPARE(written.count("Time of capture;"), 1);
    }

    void pointCloudParsesBackToTheValidVertices()
    {
        NodeData* depth = fixture.depth;
        EventsFixture::enable(depth, "enableVerticesFloatingPoint");
        EventsFixture::enable(depth, "enableUvMap");
        // Three points, the middle one invalid (z = 0).
        fill<float>(depth->buffer(BufferData::VerticesFloatingPoint), 3, 1,
                    {0.1f, 0.2f, 1.f, 0.f, 0.f, 0.f, -0.3f, 0.4f, 2.5f});
        fill<float>(depth->buffer(BufferData::UV), 3, 1, {0.f, 0.f, 0.5f, 0.5f, 0.99f, 0.75f});

        const QString plain = directory.filePath("plain.ply");
        QCOMPARE(FrameExport::writePly(plain, depth, fixture.manager, 0x000000), FrameExport::Result::Written);
        QByteArray bytes = contentsOf(plain);
        const QByteArray header = "ply\nformat binary_little_endian 1.0\ncomment written by Zerlane Viewer\n"
                                  "element vertex 2\nproperty float x\nproperty float y\nproperty float z\nend_header\n";
        QVERIFY(bytes.startsWith(header));
        QCOMPARE(bytes.size(), header.size() + 2 * 12);
        float xyz[6];
        std::memcpy(xyz, bytes.constData() + header.size(), sizeof(xyz));
        QCOMPARE(std::vector<float>(xyz, xyz + 6), (std::vector<float>{0.1f, 0.2f, 1.f, -0.3f, 0.4f, 2.5f}));

        // With the colour image streaming, each point takes the colour its UV pixel has there; points
        // outside the image take the unmapped colour.
        BufferData* colour = fixture.deviceRecord->colorBuffer();
        const int slot = colour->readSlot();
        colour->width[slot] = 4;
        colour->height[slot] = 4;
        colour->image[slot].resize(4, 4);
        for (int i = 0; i < 16; ++i) {
            colour->image[slot].pixels[3 * i] = uint8_t(i);           // blue
            colour->image[slot].pixels[3 * i + 1] = uint8_t(100 + i); // green
            colour->image[slot].pixels[3 * i + 2] = uint8_t(200 + i); // red
        }
        colour->node->dataReceived = true;
        fill<float>(depth->buffer(BufferData::UV), 3, 1, {0.f, 0.f, 0.5f, 0.5f, 1.5f, 0.75f});
        const QString coloured = directory.filePath("coloured.ply");
        QCOMPARE(FrameExport::writePly(coloured, depth, fixture.manager, 0x0a0b0c), FrameExport::Result::Written);
        bytes = contentsOf(coloured);
        const int start = bytes.indexOf("end_header\n") + 11;
        QVERIFY(bytes.contains("property uchar red\nproperty uchar green\nproperty uchar blue\n"));
        QCOMPARE(bytes.size(), start + 2 * 15);
        const auto* first = reinterpret_cast<const uint8_t*>(bytes.constData() + start + 12);
        QCOMPARE((std::vector<int>{first[0], first[1], first[2]}), (std::vector<int>{200, 100, 0}));
        const auto* second = reinterpret_cast<const uint8_t*>(bytes.constData() + start + 15 + 12);
        QCOMPARE((std::vector<int>{second[0], second[1], second[2]}), (std::vector<int>{0x0a, 0x0b, 0x0c}));
        colour->node->dataReceived = false;

        // No floating-point vertices: nothing to write.
        Zerlane::Property<bool>::setValue(Zerlane::Interface(depth->node), "enableVerticesFloatingPoint", false);
        QCOMPARE(FrameExport::writePly(directory.filePath("none.ply"), depth, fixture.manager, 0),
                 FrameExport::Result::NothingToWrite);
        QVERIFY(!QFile::exists(directory.filePath("none.ply")));
    }

    void filesThatCannotBeCreatedOrFilledAreReported()
    {
        NodeData* depth = fixture.depth;
        const QString missing = directory.filePath("no/such/folder/frame.csv");
        QCOMPARE(FrameExport::writeCsv(missing, depth, fixture.manager), FrameExport::Result::NotCreated);
        QVERIFY(!QFile::exists(missing));
        // A device that is always full.
        EventsFixture::enable(depth, "enableDepthMap");
        fill<int16_t>(depth->buffer(BufferData::Depth), 2, 1, {1, 2});
        QCOMPARE(FrameExport::writeCsv("/dev/full", depth, fixture.manager), FrameExport::Result::WriteFailed);
        EventsFixture::enable(depth, "enableVerticesFloatingPoint");
        fill<float>(depth->buffer(BufferData::VerticesFloatingPoint), 1, 1, {0.f, 0.f, 1.f});
        QCOMPARE(FrameExport::writePly("/dev/full", depth, fixture.manager, 0), FrameExport::Result::WriteFailed);
    }

private:
    EventsFixture fixture;
    QTemporaryDir directory;
};

QTEST_MAIN(TestExport)
#include "tst_export.moc"
