// Samples into buffers: slots, times, the reference time, colouring and the streaming rule, driven by
// the stepped simulated camera through the real event thread.

#include "EventsFixture.h"

#include "camera/DepthNodeData.h"
#include "palettes/DepthPalette.h"
#include "support/LogRecorder.h"

#include <QtTest>

#include <set>

class TestSampleIntake : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { ViewerTest::isolateSettings(); }

    void init()
    {
        fixture.start();
        frames.clear();
        connect(fixture.thread, &ZerlaneThread::newFrame, this, [this](BufferData* b) { frames.push_back(b); },
                Qt::QueuedConnection);
    }

    void cleanup()
    {
        disconnect(fixture.thread, nullptr, this, nullptr);
        fixture.stop();
    }

    void depthSamplesFillEveryBufferAndFlipTogether()
    {
        NodeData* depth = fixture.depth;
        EventsFixture::enable(depth, "enableDepthMap");
        EventsFixture::enable(depth, "enableDepthMapFloatingPoint");
        EventsFixture::enable(depth, "enableVerticesFloatingPoint");
        fixture.manager->registerNode(depth, true);
        fixture.manager->addDisplayedBuffer(depth->buffer(BufferData::Depth));
        fixture.manager->startNodes();

        Zerlane::Sim::Control::step(1);
        QVERIFY(ViewerTest::waitFor([this] { return frames.size() >= 8; }));
        QCOMPARE(frames.size(), size_t(8)); // one newFrame per buffer, filled or not

        BufferData* map = depth->buffer(BufferData::Depth);
        BufferData* phase = depth->buffer(BufferData::Phase);
        BufferData* deviation = depth->buffer(BufferData::StandardDeviation);
        for (BufferData* b : depth->buffers)
            QCOMPARE(b->writeSlot, 1);
        QCOMPARE(map->readSlot(), 0);
        QVERIFY(!map->noData);
        QCOMPARE(map->frameCount.load(), 1);
        QCOMPARE(map->width[1], 640u);
        QCOMPARE(map->height[1], 480u);
        QCOMPARE(map->image[1].width, 640u);
        QVERIFY(map->image[1].generation > map->image[0].generation); // written last
        QVERIFY(phase->noData); // switched off: no data, but the slot still moved and was stamped
        QCOMPARE(phase->frameCount.load(), 0);
        QCOMPARE(phase->timeOfCapture[1], map->timeOfCapture[1]);
        QVERIFY(deviation->noData); // no region of interest

        // The first sample sets the reference time to the earlier of its two times.
        const quint64 capture = map->timeOfCapture[1], arrival = map->timeOfArrival[1];
        QVERIFY(capture > 0 && arrival >= capture);
        QCOMPARE(fixture.manager->referenceTime(), std::min(capture, arrival));
        QVERIFY(map->timeOfEvent[1] >= arrival);

        // The depth image is the palette colour of each depth value by the depth rule.
        const auto* values = reinterpret_cast<const int16_t*>(map->data[1]);
        const auto* pixels = reinterpret_cast<const quint32*>(map->image[1].pixels);
        const DepthPalette& palette = *fixture.manager->palette();
        const float range = static_cast<DepthNodeData*>(depth)->range();
        const int factor = int(8388.352 / range);
        int checked = 0;
        for (int i = 0; i < 640 * 480; i += 997) {
            const int16_t v = values[i];
            quint32 expected;
            if (v == 32001 || v == 32002 || v == 32003)
                expected = palette.colors()[32769 + (v - 32001)];
            else if (v >= 32004)
                expected = palette.colors()[32772];
            else
                expected = palette.colors()[((int(v) * factor) >> 8) & 0xFFFF];
            QCOMPARE(pixels[i], expected);
            ++checked;
        }
        QVERIFY(checked > 300);

        // The second sample puts the writer back in slot 0; readers see slot 1. The reference stays.
        frames.clear();
        Zerlane::Sim::Control::step(1);
        QVERIFY(ViewerTest::waitFor([this] { return frames.size() >= 8; }));
        QCOMPARE(map->writeSlot, 0);
        QCOMPARE(map->readSlot(), 1);
        QCOMPARE(map->frameCount.load(), 2);
        QVERIFY(map->timeOfCapture[0] > map->timeOfCapture[1]);
        QCOMPARE(fixture.manager->referenceTime(), std::min(capture, arrival));
        QVERIFY(depth->dataReceived);
    }

    void aNewPaletteColoursFromTheNextFrame()
    {
        NodeData* depth = fixture.depth;
        EventsFixture::enable(depth, "enableDepthMap");
        fixture.manager->registerNode(depth, true);
        BufferData* map = depth->buffer(BufferData::Depth);
        fixture.manager->addDisplayedBuffer(map);
        fixture.manager->startNodes();
        Zerlane::Sim::Control::step(1);
        QVERIFY(ViewerTest::waitFor([map] { return map->frameCount == 1; }));

        // A frame being coloured keeps the table it started with, so the old one must outlive the swap.
        const std::shared_ptr<const DepthPalette> before = fixture.manager->palette();
        const quint32 firstColour = before->colors()[0];
        std::unique_ptr<DepthPalette> inverted(DepthPalette::invertedGreyScale(32768));
        fixture.manager->setPalette(*inverted);
        QCOMPARE(before->colors()[0], firstColour);
        QVERIFY(fixture.manager->palette() != before);
        QCOMPARE(fixture.manager->palette()->name(), inverted->name());

        Zerlane::Sim::Control::step(1);
        QVERIFY(ViewerTest::waitFor([map] { return map->frameCount == 2; }));
        const int slot = map->writeSlot; // the slot of the frame just delivered
        const auto* values = reinterpret_cast<const int16_t*>(map->data[slot]);
        const auto* pixels = reinterpret_cast<const quint32*>(map->image[slot].pixels);
        const int factor = int(8388.352 / static_cast<DepthNodeData*>(depth)->range());
        int differing = 0;
        for (int i = 0; i < 640 * 480; i += 997) {
            const int16_t v = values[i];
            if (v < 0 || v > 32000)
                continue;
            const int index = ((int(v) * factor) >> 8) & 0xFFFF;
            QCOMPARE(pixels[i], inverted->colors()[index]);
            differing += inverted->colors()[index] != before->colors()[index];
        }
        QVERIFY(differing > 100);
    }

    void samplesAreOnlyCountedWhileNotStreaming()
    {
        NodeData* depth = fixture.depth;
        EventsFixture::enable(depth, "enableDepthMap");
        fixture.manager->registerNode(depth, true);
        fixture.manager->addDisplayedBuffer(depth->buffer(BufferData::Depth));
        fixture.manager->startNodes();
        fixture.manager->setStreamingState(CameraManager::Frozen);

        depth->sampleCount = 0;
        Zerlane::Sim::Control::step(3);
        QVERIFY(ViewerTest::waitFor([depth] { return depth->sampleCount == 3; }));
        QTest::qWait(100);
        QVERIFY(frames.empty());
        QCOMPARE(depth->buffer(BufferData::Depth)->frameCount.load(), 0);
        QVERIFY(!depth->dataReceived);
    }

    void unboundNodesDeliverNothing()
    {
        NodeData* depth = fixture.depth;
        EventsFixture::enable(depth, "enableDepthMap");
        fixture.manager->registerNode(depth, true);
        BufferData* map = depth->buffer(BufferData::Depth);
        fixture.manager->addDisplayedBuffer(map);
        fixture.manager->removeDisplayedBuffer(map); // the last view closed
        fixture.manager->startNodes();
        Zerlane::Sim::Control::step(2);
        QTest::qWait(200);
        QVERIFY(frames.empty());
        QCOMPARE(depth->sampleCount.load(), 0);
    }

    void colourAndAudioSamples()
    {
        NodeData* color = fixture.color;
        NodeData* audio = fixture.audio;
        EventsFixture::enable(color, "enableColorMap");
        fixture.manager->registerNode(color, true);
        fixture.manager->registerNode(audio, true);
        fixture.manager->addDisplayedBuffer(color->buffers[0]);
        fixture.manager->addDisplayedBuffer(audio->buffers[0]);
        fixture.manager->startNodes();

        Zerlane::Sim::Control::step(1);
        QVERIFY(ViewerTest::waitFor([this] { return frames.size() >= 2; }));
        BufferData* image = color->buffers[0];
        QCOMPARE(image->writeSlot, 1);
        QVERIFY(!image->noData);
        QCOMPARE(image->frameCount.load(), 1);
        QCOMPARE(image->image[1].width, image->width[1]);
        // A colour picture of the scene is not one flat colour.
        std::set<int> values;
        for (uint32_t i = 0; i < image->width[1] * image->height[1] * 3; i += 331)
            values.insert(image->image[1].pixels[i]);
        QVERIFY(values.size() > 10);

        BufferData* sound = audio->buffers[0];
        QCOMPARE(sound->frameCount.load(), 1);
        QCOMPARE(sound->image[1].width, 1280u);
        QCOMPARE(sound->image[1].height, 256u);
        QVERIFY(sound->audioMarker[1] > 0); // 1/20 s of sound covers 64 of the 1280 columns
        QCOMPARE(sound->audioMarker[1], 64u);
    }

    // Frames larger than a buffer's fixed capacity, or maps shorter than their frame, are refused as a
    // whole: every buffer of the node is marked without data and sized 0 x 0, one warning per node, and
    // the node's next frame that fits is taken again.
    void framesThatDoNotFitAreRefused()
    {
        ViewerTest::LogRecorder log(true);
        NodeData* depth = fixture.depth;
        NodeData* color = fixture.color;
        fixture.manager->registerNode(depth, true);
        fixture.manager->registerNode(color, true);
        BufferData* map = depth->buffer(BufferData::Depth);
        fixture.manager->addDisplayedBuffer(map);
        fixture.manager->addDisplayedBuffer(color->buffers[0]);
        fixture.manager->startNodes();

        // 1280 x 720 depth: 1,843,200 bytes of depth would just fit the Depth block, but not the others.
        const int big = 1280 * 720;
        auto owner = std::make_shared<std::vector<int16_t>>(size_t(big) * 6, int16_t(1000));
        Zerlane::DepthNode::NewSampleReceivedData sample;
        sample.captureConfiguration.frameFormat = Zerlane::FRAME_FORMAT_HD720;
        sample.depthMap = Zerlane::Pointer<int16_t>(owner, owner->data(), big);
        sample.timeOfCapture = sample.timeOfArrival = 5;
        for (int i = 0; i < 3; ++i)
            fixture.thread->onDepthSample(Zerlane::DepthNode(depth->node), sample);
        for (BufferData* b : depth->buffers) {
            QVERIFY(b->noData);
            QCOMPARE(b->width[b->writeSlot], 0u);
            QCOMPARE(b->frameCount.load(), 0);
        }
        QCOMPARE(static_cast<DepthNodeData*>(depth)->historyCount.load(), 0u);

        // A VGA frame whose UV map is too short to cover it is refused too, without a second log line.
        sample.captureConfiguration.frameFormat = Zerlane::FRAME_FORMAT_VGA;
        sample.depthMap = Zerlane::Pointer<int16_t>(owner, owner->data(), 640 * 480);
        sample.uvMap = Zerlane::Pointer<Zerlane::UV>(owner, reinterpret_cast<const Zerlane::UV*>(owner->data()), 100);
        fixture.thread->onDepthSample(Zerlane::DepthNode(depth->node), sample);
        QVERIFY(map->noData);

        // A colour map shorter than its frame format says.
        Zerlane::ColorNode::NewSampleReceivedData colour;
        colour.captureConfiguration.frameFormat = Zerlane::FRAME_FORMAT_HD720;
        colour.captureConfiguration.compression = Zerlane::COMPRESSION_TYPE_NONE;
        auto bytes = std::make_shared<std::vector<uint8_t>>(640 * 480 * 3, uint8_t(7));
        colour.colorMap = Zerlane::Pointer<uint8_t>(bytes, bytes->data(), int32_t(bytes->size()));
        fixture.thread->onColorSample(Zerlane::ColorNode(color->node), colour);
        QVERIFY(color->buffers[0]->noData);
        QCOMPARE(color->buffers[0]->frameCount.load(), 0);

        const QStringList warnings = log.warnings().filter("refused");
        QCOMPARE(warnings.size(), 2); // one per node
        QVERIFY(warnings[0].contains("larger than the depth buffers"));
        QVERIFY(warnings[1].contains("colour map holds"));

        // The simulated camera's own frames fit and are taken again.
        EventsFixture::enable(depth, "enableDepthMap");
        Zerlane::Sim::Control::step(1);
        QVERIFY(ViewerTest::waitFor([map] { return map->frameCount.load() == 1; }));
        QVERIFY(!map->noData);
        QCOMPARE(map->width[map->writeSlot], 640u);
    }

private:
    EventsFixture fixture;
    std::vector<BufferData*> frames;
};

QTEST_MAIN(TestSampleIntake)
#include "tst_sampleintake.moc"
