// Records and buffers: reference and active counts, slots, images.
#include "camera/BufferAvailability.h"
#include "camera/BufferData.h"
#include "camera/DepthNodeData.h"
#include "camera/DeviceData.h"
#include "camera/RecordUtils.h"

#include <QCoreApplication>
#include <QProcess>
#include <QtTest>

#include <sys/resource.h>

#include <cstring>
#include <set>

namespace {

// A record whose memory outlives its destruction, so that releasing it once too often reaches the
// assertion instead of freed memory.
class LeakyRecord : public RefCounted {
public:
    static void operator delete(void*) {}
};

int releaseTooOften()
{
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    auto* record = new LeakyRecord;
    record->release();
    record->release(); // must abort
    return 0;
}

// Counts destructions of buffers.
int g_buffersDestroyed = 0;
class CountedBuffer : public BufferData {
public:
    using BufferData::BufferData;
    ~CountedBuffer() override { ++g_buffersDestroyed; }
};

} // namespace

class TstCamera : public QObject {
    Q_OBJECT
private slots:
    void freshRecordsAndReferenceCounts();
    void releaseBelowZeroAborts();
    void activeCountsClimbFromNodeToDevice();
    void nodeReleasesItsBuffers();
    void depthNodeOwnsItsHistory();
    void relationsOfEveryKind();
    void availabilityOfEveryStream();
    void newBufferState();
    void capacitiesAndNames();
    void slotsFlipAndReaderTakesTheOther();
    void dataBlocksAreAlignedAndWritable();
    void imageResizing();
    void imageFilling();
};

void TstCamera::freshRecordsAndReferenceCounts()
{
    auto* device = new DeviceData(Zerlane::Device(), {});
    QCOMPARE(device->refCount(), 1);
    QCOMPARE(device->kind(), uint32_t(DeviceNodeBufferData::KindDevice));
    QVERIFY(!device->modelIndex.isValid());
    QCOMPARE(device->activeCount(), 0u);
    QVERIFY(!device->registered && !device->controlled && !device->dataReceived && !device->disconnected);

    auto* node = new NodeData(Zerlane::Node(), device, {});
    QCOMPARE(node->kind(), uint32_t(DeviceNodeBufferData::KindNode));
    QVERIFY(!node->registered && !node->controlled && !node->dataReceived);
    QVERIFY(!node->roi().isSet());
    QCOMPARE(node->sampleCount.load(), 0);

    // An extra reference keeps the record alive through one release.
    g_buffersDestroyed = 0;
    auto* buffer = new CountedBuffer(node, BufferData::Depth);
    buffer->addRef();
    QCOMPARE(buffer->refCount(), 2);
    buffer->release();
    QCOMPARE(g_buffersDestroyed, 0);
    QCOMPARE(buffer->refCount(), 1);
    buffer->release();
    QCOMPARE(g_buffersDestroyed, 1);

    node->release();
    device->release();
}

void TstCamera::releaseBelowZeroAborts()
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--release-too-often")});
    QVERIFY(child.waitForFinished(30000));
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    QVERIFY(child.readAllStandardError().contains("already released"));
}

void TstCamera::activeCountsClimbFromNodeToDevice()
{
    auto* device = new DeviceData(Zerlane::Device(), {});
    auto* depth = new NodeData(Zerlane::Node(), device, {});
    auto* color = new NodeData(Zerlane::Node(), device, {});
    auto* buffer = new BufferData(depth, BufferData::Phase);
    depth->buffers.push_back(buffer);

    depth->incrementActive();
    color->incrementActive();
    color->incrementActive();
    QCOMPARE(depth->activeCount(), 1u);
    QCOMPARE(color->activeCount(), 2u);
    QCOMPARE(device->activeCount(), 3u);

    buffer->incrementActive();
    QCOMPARE(buffer->activeCount(), 1u);
    QCOMPARE(depth->activeCount(), 1u);
    QCOMPARE(device->activeCount(), 3u);

    color->decrementActive();
    device->incrementActive();
    QCOMPARE(color->activeCount(), 1u);
    QCOMPARE(device->activeCount(), 3u);

    color->release();
    depth->release();
    device->release();
}

void TstCamera::nodeReleasesItsBuffers()
{
    g_buffersDestroyed = 0;
    auto* node = new NodeData(Zerlane::Node(), nullptr, {});
    auto* kept = new CountedBuffer(node, BufferData::Phase);
    node->buffers.push_back(kept);
    node->buffers.push_back(new CountedBuffer(node, BufferData::Depth));
    kept->addRef(); // a view still holds this one

    node->release();
    QCOMPARE(g_buffersDestroyed, 1);
    QCOMPARE(kept->refCount(), 1);
    kept->release();
    QCOMPARE(g_buffersDestroyed, 2);
}

void TstCamera::depthNodeOwnsItsHistory()
{
    std::vector<Zerlane::DepthNode::Configuration> configurations(2);
    Zerlane::DepthNode::Configuration current;
    auto* node = new DepthNodeData(Zerlane::Node(), nullptr, {}, &configurations, &current, 3.5f);
    QCOMPARE(node->kind(), uint32_t(DeviceNodeBufferData::KindNode));
    QCOMPARE(node->history.size(), size_t(100));
    QCOMPARE(DepthNodeData::FrameBytes, 1228800);
    // Every block is distinct and writable over its whole size.
    std::set<float*> blocks(node->history.begin(), node->history.end());
    blocks.insert(node->mean);
    blocks.insert(node->deviation);
    QCOMPARE(blocks.size(), size_t(102));
    for (float* block : blocks) {
        QVERIFY(block);
        std::memset(block, 0, DepthNodeData::FrameBytes);
    }
    QCOMPARE(node->historyCount, 0u);
    node->release();
}

void TstCamera::relationsOfEveryKind()
{
    auto* device = new DeviceData(Zerlane::Device(), {});
    auto* node = new NodeData(Zerlane::Node(), device, {});
    auto* buffer = new BufferData(node, BufferData::UV);
    auto* vertices = new BufferData(node, BufferData::VerticesFloatingPoint);
    node->buffers = {buffer, vertices};
    auto* orphan = new BufferData(nullptr, BufferData::UV);

    QCOMPARE(deviceOf(device), device);
    QCOMPARE(deviceOf(node), device);
    QCOMPARE(deviceOf(buffer), device);
    QCOMPARE(deviceOf(orphan), static_cast<DeviceData*>(nullptr));
    QCOMPARE(deviceOf(nullptr), static_cast<DeviceData*>(nullptr));

    // A buffer stands for its node; a device for none.
    QCOMPARE(nodeOf(node), node);
    QCOMPARE(nodeOf(buffer), node);
    QCOMPARE(nodeOf(device), static_cast<NodeData*>(nullptr));
    QCOMPARE(nodeOf(orphan), static_cast<NodeData*>(nullptr));
    QCOMPARE(nodeOf(nullptr), static_cast<NodeData*>(nullptr));

    QCOMPARE(node->buffer(BufferData::VerticesFloatingPoint), vertices);
    QCOMPARE(node->buffer(BufferData::UV), buffer);
    QCOMPARE(node->buffer(BufferData::Depth), static_cast<BufferData*>(nullptr));
    QCOMPARE(device->colorBuffer(), static_cast<BufferData*>(nullptr));
    auto* colour = new NodeData(Zerlane::Node(), device, {});
    auto* image = new BufferData(colour, BufferData::Color);
    colour->buffers = {image};
    device->nodes = {node, colour};
    QCOMPARE(device->colorBuffer(), image);
    device->nodes.clear();
    colour->release();

    orphan->release();
    node->release();
    device->release();
}

void TstCamera::availabilityOfEveryStream()
{
    auto* device = new DeviceData(Zerlane::Device(), {});
    auto* depth = new NodeData(Zerlane::Node(), device, {});
    auto* phase = new BufferData(depth, BufferData::Phase);
    auto* deviation = new BufferData(depth, BufferData::StandardDeviation);
    auto* uv = new BufferData(depth, BufferData::UV);
    depth->buffers = {phase, deviation, uv};
    device->nodes = {depth};

    // An ordinary stream is unavailable exactly when its last sample carried nothing.
    QVERIFY(!BufferAvailability::isUnavailable(phase));
    phase->noData = true;
    QVERIFY(BufferAvailability::isUnavailable(phase));
    QCOMPARE(BufferAvailability::unavailableText(phase), QString("Not streaming"));

    // The deviation view first asks for a region.
    QCOMPARE(BufferAvailability::unavailableText(deviation), QString("No ROI selected"));
    depth->setRoi({10, 0, 1, 1});
    QCOMPARE(BufferAvailability::unavailableText(deviation), QString("Not streaming"));

    // The UV map needs the colour node, the floating-point vertices and a streaming colour image,
    // and names the first that is missing.
    QVERIFY(BufferAvailability::isUnavailable(uv));
    QCOMPARE(BufferAvailability::unavailableText(uv), QString("Color node not present"));
    auto* colour = new NodeData(Zerlane::Node(), device, {});
    auto* image = new BufferData(colour, BufferData::Color);
    colour->buffers = {image};
    device->nodes = {depth, colour};
    QCOMPARE(BufferAvailability::unavailableText(uv), QString("Vertices Floating Point not streaming"));
    auto* vertices = new BufferData(depth, BufferData::VerticesFloatingPoint);
    depth->buffers.push_back(vertices);
    vertices->noData = true;
    QCOMPARE(BufferAvailability::unavailableText(uv), QString("Vertices Floating Point not streaming"));
    vertices->noData = false;
    QVERIFY(BufferAvailability::isUnavailable(uv));
    QCOMPARE(BufferAvailability::unavailableText(uv), QString("Color not streaming"));
    colour->dataReceived = true;
    QVERIFY(!BufferAvailability::isUnavailable(uv));
    image->noData = true;
    QVERIFY(BufferAvailability::isUnavailable(uv));
    QCOMPARE(BufferAvailability::unavailableText(uv), QString("Color not streaming"));
    image->noData = false;
    uv->noData = true;
    QVERIFY(BufferAvailability::isUnavailable(uv));
    QCOMPARE(BufferAvailability::unavailableText(uv), QString("Not streaming"));

    device->nodes.clear();
    colour->release();
    depth->release();
    device->release();
}

void TstCamera::newBufferState()
{
    auto* buffer = new BufferData(nullptr, BufferData::Color);
    QCOMPARE(buffer->kind(), uint32_t(DeviceNodeBufferData::KindBuffer));
    QCOMPARE(buffer->writeSlot, 0);
    QCOMPARE(buffer->readSlot(), 1);
    QCOMPARE(buffer->frameCount.load(), 0);
    QVERIFY(!buffer->noData);
    for (int slot = 0; slot < 2; ++slot) {
        QVERIFY(buffer->sizeChanged[slot]);
        QCOMPARE(buffer->width[slot], 0u);
        QCOMPARE(buffer->timeOfCapture[slot], quint64(0));
        const DisplayImage& image = buffer->image[slot];
        QCOMPARE(image.width, 320u);
        QCOMPARE(image.height, 240u);
        QCOMPARE(image.textureWidth, 512u);
        QCOMPARE(image.textureHeight, 256u);
        QCOMPARE(image.byteSize, 524288);
        QVERIFY(image.generation != 0); // a view has never uploaded these pixels
        for (int i = 0; i < image.byteSize; i += 4099)
            QCOMPARE(int(image.pixels[i]), 128);
        QCOMPARE(int(image.pixels[image.byteSize - 1]), 128);
    }
    QVERIFY(buffer->image[0].pixels != buffer->image[1].pixels);
    QVERIFY(buffer->image[0].generation != buffer->image[1].generation);
    buffer->release();
}

void TstCamera::capacitiesAndNames()
{
    const struct {
        uint32_t type;
        const char* name;
        uint32_t capacity;
        const char* enableProperty;
    } expected[] = {
        {BufferData::Color, "Color", 3686400, "enableColorMap"},
        {BufferData::Phase, "Phase", 614400, "enablePhaseMap"},
        {BufferData::Confidence, "Confidence", 614400, "enableConfidenceMap"},
        {BufferData::Depth, "Depth", 1843200, "enableDepthMap"},
        {BufferData::DepthFloatingPoint, "Depth Floating Point", 3686400, "enableDepthMapFloatingPoint"},
        {BufferData::Vertices, "Vertices", 1843200, "enableVertices"},
        {BufferData::VerticesFloatingPoint, "Vertices Floating Point", 3686400, "enableVerticesFloatingPoint"},
        {BufferData::UV, "UV", 2457600, "enableUvMap"},
        {BufferData::StandardDeviation, "Standard Deviation", 1228800, "enableDepthMapFloatingPoint"},
        {BufferData::Combined, "Combined", 614400, "enablePhaseMap"},
        {BufferData::Audio, "Audio", 192000, ""},
        {11, "Unknown", 0, ""},
        {0xFFFFFFFF, "Unknown", 0, ""},
    };
    for (const auto& e : expected) {
        QCOMPARE(BufferData::typeName(e.type), QString::fromLatin1(e.name));
        QCOMPARE(BufferData::capacity(e.type), e.capacity);
        QCOMPARE(BufferData::enableProperty(e.type), QString::fromLatin1(e.enableProperty));
    }
    auto* unknown = new BufferData(nullptr, 11);
    QCOMPARE(unknown->typeName(), QStringLiteral("Unknown"));
    QVERIFY(unknown->data[0] && unknown->data[1]);
    unknown->release();
}

void TstCamera::slotsFlipAndReaderTakesTheOther()
{
    auto* buffer = new BufferData(nullptr, BufferData::Phase);
    QCOMPARE(buffer->flipWriteSlot(), 1);
    QCOMPARE(buffer->readSlot(), 0);
    QCOMPARE(buffer->flipWriteSlot(), 0);
    QCOMPARE(buffer->writeSlot, 0);
    QCOMPARE(buffer->readSlot(), 1);
    buffer->release();
}

void TstCamera::dataBlocksAreAlignedAndWritable()
{
    for (uint32_t type = 0; type <= BufferData::Audio; ++type) {
        auto* buffer = new BufferData(nullptr, type);
        for (int slot = 0; slot < 2; ++slot) {
            QCOMPARE(reinterpret_cast<uintptr_t>(buffer->data[slot]) % 32, uintptr_t(0));
            std::memset(buffer->data[slot], 0xA5, BufferData::capacity(type));
        }
        QVERIFY(buffer->data[0] != buffer->data[1]);
        buffer->release(); // frees through the pointer kept before the block
    }
}

void TstCamera::imageResizing()
{
    DisplayImage image;
    uint64_t generation = image.generation;
    image.resize(640, 480);
    QCOMPARE(image.width, 640u);
    QCOMPARE(image.height, 480u);
    QCOMPARE(image.textureWidth, 1024u);
    QCOMPARE(image.textureHeight, 512u);
    QCOMPARE(image.byteSize, 2097152);
    QVERIFY(image.generation != generation); // a new block holds other pixels

    // Same byte size: the block stays, and so do its pixels.
    generation = image.generation;
    uint8_t* block = image.pixels;
    image.resize(640, 480);
    QCOMPARE(image.pixels, block);
    image.resize(600, 300);
    QCOMPARE(image.textureWidth, 1024u);
    QCOMPARE(image.textureHeight, 512u);
    QCOMPARE(image.pixels, block);
    // Swapped texture dimensions keep the byte size (a view sees the new texture size itself).
    image.resize(300, 600);
    QCOMPARE(image.textureWidth, 512u);
    QCOMPARE(image.textureHeight, 1024u);
    QCOMPARE(image.pixels, block);
    QCOMPARE(image.generation, generation);

    image.resize(1280, 720);
    QCOMPARE(image.textureWidth, 2048u);
    QCOMPARE(image.textureHeight, 1024u);
    QCOMPARE(image.byteSize, 2048 * 1024 * 4);
    std::memset(image.pixels, 0, size_t(image.byteSize));

    image.resize(1, 1);
    QCOMPARE(image.textureWidth, 1u);
    QCOMPARE(image.textureHeight, 1u);
    QCOMPARE(image.byteSize, 4);
    image.resize(513, 257);
    QCOMPARE(image.textureWidth, 1024u);
    QCOMPARE(image.textureHeight, 512u);
}

void TstCamera::imageFilling()
{
    // Every write gives the image a generation that no image has had before.
    DisplayImage image;
    image.resize(4, 2);
    std::set<uint64_t> generations{image.generation};
    auto renewed = [&generations](const DisplayImage& i) { return generations.insert(i.generation).second; };
    const uint8_t bgr[24] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24};
    image.fillFromBgr(bgr);
    QVERIFY(renewed(image));
    QCOMPARE(std::memcmp(image.pixels, bgr, sizeof bgr), 0);
    QCOMPARE(int(image.pixels[24]), 128); // nothing beyond width x height x 3

    // Mid-grey YUY2 (Y 126, U = V = 128) turns into grey B = G = R.
    const uint8_t yuy2[16] = {126, 128, 126, 128, 126, 128, 126, 128, 126, 128, 126, 128, 126, 128, 126, 128};
    image.fillFromYuy2(yuy2);
    QVERIFY(renewed(image));
    for (int i = 0; i < 24; ++i)
        QCOMPARE(int(image.pixels[i]), (298 * (126 - 16) + 128) >> 8);

    DisplayImage other;
    other.resize(640, 480);
    other.pixels[100] = 7;
    QVERIFY(renewed(other));
    image.copyFrom(other);
    QCOMPARE(image.width, 640u);
    QCOMPARE(image.byteSize, other.byteSize);
    QCOMPARE(int(image.pixels[100]), 7);
    QVERIFY(renewed(image)); // a copy is a change of its own, not the other image's generation
}

int main(int argc, char** argv)
{
    if (argc > 1 && std::strcmp(argv[1], "--release-too-often") == 0)
        return releaseTooOften();
    QCoreApplication app(argc, argv);
    TstCamera test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_camera.moc"
