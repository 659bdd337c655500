// Which nodes are mirrored, with which buffers, and what is logged about the others.

#include "EventsFixture.h"

#include "app/shared/StartupOptions.h"
#include "camera/DepthNodeData.h"

#include <QtTest>

class TestDiscovery : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { fixture.stop(); }

    void mirrorsEveryKindWithItsBuffers()
    {
        fixture.start(false);
        QVERIFY(fixture.depth && fixture.color && fixture.audio);
        QCOMPARE(fixture.deviceRecord->nodes.size(), size_t(3));
        QCOMPARE(fixture.manager->nodes().size(), size_t(3));

        const std::vector<uint32_t> depthOrder = {BufferData::Phase, BufferData::Confidence, BufferData::Depth,
                                                  BufferData::DepthFloatingPoint, BufferData::Vertices,
                                                  BufferData::VerticesFloatingPoint, BufferData::UV,
                                                  BufferData::StandardDeviation};
        QCOMPARE(fixture.depth->buffers.size(), depthOrder.size());
        for (size_t i = 0; i < depthOrder.size(); ++i) {
            QCOMPARE(fixture.depth->buffers[i]->type, depthOrder[i]);
            QCOMPARE(fixture.depth->buffers[i]->node, fixture.depth);
        }
        QCOMPARE(fixture.color->buffers.size(), size_t(1));
        QCOMPARE(fixture.color->buffers[0]->type, uint32_t(BufferData::Color));
        QCOMPARE(fixture.audio->buffers.size(), size_t(1));
        QCOMPARE(fixture.audio->buffers[0]->type, uint32_t(BufferData::Audio));

        // The configuration list and the current configuration come from the camera.
        auto* depth = static_cast<DepthNodeData*>(fixture.depth);
        QVERIFY(!depth->configurations->empty());
        QCOMPARE(*depth->currentConfiguration, Zerlane::DepthNode(depth->node).getConfiguration());
        QCOMPARE(depth->range(), Zerlane::DepthNode(depth->node).getRange());
    }

    void disabledKindsAreLoggedAndLeftOut_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("depth") << int(Zerlane::NodeKind::Depth);
        QTest::newRow("colour") << int(Zerlane::NodeKind::Color);
        QTest::newRow("audio") << int(Zerlane::NodeKind::Audio);
    }

    void disabledKindsAreLoggedAndLeftOut()
    {
        QFETCH(int, kind);
        ViewerTest::useSteppedSimulator();
        StartupOptions::setDisableDepth(kind == int(Zerlane::NodeKind::Depth));
        StartupOptions::setDisableColor(kind == int(Zerlane::NodeKind::Color));
        StartupOptions::setDisableAudio(kind == int(Zerlane::NodeKind::Audio));
        ViewerTest::LogRecorder log;
        CameraManager* manager = CameraManager::instance();
        const Zerlane::Device device = manager->context().getDevices().front();
        manager->appendDevice(manager->addDevice(device));
        int mirrored = 0;
        for (const Zerlane::Node& node : device.getNodes()) {
            NodeData* record = manager->addNode(device, node);
            QCOMPARE(record == nullptr, int(node.kind()) == kind);
            if (record)
                ++mirrored;
            else
                QVERIFY(log.contains(QString("A %1 was disabled").arg(QString::fromStdString(node.getType().name()))));
        }
        QCOMPARE(mirrored, 2);
        fixture.manager = manager; // cleaned up with the fixture
    }

    void refusesNodesItCannotMirror()
    {
        ViewerTest::useSteppedSimulator();
        ViewerTest::LogRecorder log;
        CameraManager* manager = CameraManager::instance();
        fixture.manager = manager;
        const Zerlane::Device device = manager->context().getDevices().front();

        // A node whose device has no record.
        QVERIFY(!manager->addNode(device, device.getNodes().front()));
        QVERIFY(log.contains("No corresponding device found"));

        // An unsupported node.
        manager->appendDevice(manager->addDevice(device));
        Zerlane::Sim::Control::addNode(device.getSerialNumber(), Zerlane::NodeKind::Unsupported);
        Zerlane::Node unsupported;
        for (const Zerlane::Node& node : device.getNodes()) {
            if (node.is<Zerlane::UnsupportedNode>())
                unsupported = node;
        }
        QVERIFY(unsupported.isSet());
        QVERIFY(!manager->addNode(device, unsupported));
        QVERIFY(log.contains("Unsupported Node reason: "));

        // A failing camera call while the record is built.
        Zerlane::plugin::FaultInjector::inject("DepthNode::getRange", Zerlane::plugin::FaultInjector::Kind::Exception,
                                               "range unreadable", 1);
        for (const Zerlane::Node& node : device.getNodes()) {
            if (node.is<Zerlane::DepthNode>())
                QVERIFY(!manager->addNode(device, node));
        }
        QVERIFY(log.contains("Could not add node : range unreadable"));
    }

private:
    EventsFixture fixture;
};

QTEST_MAIN(TestDiscovery)
#include "tst_discovery.moc"
