// Registration, control and typed properties, with the messages their failures give.

#include "EventsFixture.h"

#include <QtTest>

using Zerlane::plugin::FaultInjector;

class TestControl : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { ViewerTest::isolateSettings(); }
    void init() { fixture.start(false); }
    void cleanup() { fixture.stop(); }

    void registeringANodeAndItsFailure()
    {
        ViewerTest::MessageBoxRecorder boxes;
        NodeData* node = fixture.depth;
        fixture.manager->registerNode(node, true);
        QVERIFY(node->registered);

        FaultInjector::inject("Context::unregisterNode", FaultInjector::Kind::Exception, "camera busy", 1);
        fixture.manager->registerNode(node, false);
        QVERIFY(node->registered); // unchanged by the failure
        QCOMPARE(boxes.texts, QStringList{"Could not unregister node : camera busy"});
        QCOMPARE(boxes.titles, QStringList{"Warning"});

        fixture.manager->registerNode(node, false);
        QVERIFY(!node->registered);
    }

    void controllingADeviceAndItsFailures()
    {
        ViewerTest::MessageBoxRecorder boxes;
        ViewerTest::LogRecorder log;
        DeviceData* device = fixture.deviceRecord;

        // Another client holds the camera: the two-line warning, nothing changes.
        Zerlane::Sim::Control::setControlledByAnotherClient(device->device.getSerialNumber(), true);
        fixture.manager->controlDevice(device, true);
        QVERIFY(!device->controlled);
        QCOMPARE(boxes.texts, QStringList{"Another application has already\nclaimed control over this device."});
        Zerlane::Sim::Control::setControlledByAnotherClient(device->device.getSerialNumber(), false);

        // Granted: every node of the device follows.
        fixture.manager->controlDevice(device, true);
        QVERIFY(device->controlled);
        for (NodeData* node : device->nodes)
            QVERIFY(node->controlled);

        // Asking again calls nothing (the armed fault is never reached).
        FaultInjector::inject("Context::requestControl", FaultInjector::Kind::Exception, "not reached", 1);
        fixture.manager->controlDevice(device, true);
        QVERIFY(device->controlled);
        QVERIFY(!log.contains("not reached"));
        FaultInjector::clear();

        // Another failure is logged, not shown.
        FaultInjector::inject("Context::releaseControl", FaultInjector::Kind::InvalidOperation, "link down", 1);
        fixture.manager->controlDevice(device, false);
        QVERIFY(device->controlled);
        QVERIFY(log.contains("Could not release control: link down"));
        QCOMPARE(boxes.texts.size(), 1);

        fixture.manager->controlDevice(device, false);
        QVERIFY(!device->controlled);
        for (NodeData* node : device->nodes)
            QVERIFY(!node->controlled);
    }

    void typedPropertiesAndTheirRefusals()
    {
        ViewerTest::MessageBoxRecorder boxes;
        ViewerTest::LogRecorder log;
        NodeData* node = fixture.depth;

        // A successful set clears the data-received flag even when the value does not change.
        const bool before = fixture.manager->getProperty<bool>(node, "enableDepthMap");
        node->dataReceived = true;
        QVERIFY(fixture.manager->setProperty<bool>(node, "enableDepthMap", before));
        QVERIFY(!node->dataReceived);

        // Writing a camera property needs control: refused, reported, and the value stays.
        const int32_t threshold = fixture.manager->getProperty<int32_t>(node, "confidenceThreshold");
        node->dataReceived = true;
        QVERIFY(!fixture.manager->setProperty<int32_t>(node, "confidenceThreshold", threshold + 1));
        QVERIFY(node->dataReceived);
        QCOMPARE(boxes.texts.size(), 1);
        QVERIFY2(boxes.texts.first().startsWith("Could not set property confidenceThreshold: "),
                 qPrintable(boxes.texts.first()));
        QCOMPARE(fixture.manager->getProperty<int32_t>(node, "confidenceThreshold"), threshold);

        fixture.manager->controlNode(node, true);
        QVERIFY(fixture.manager->setProperty<int32_t>(node, "confidenceThreshold", threshold + 1));
        QCOMPARE(fixture.manager->getProperty<int32_t>(node, "confidenceThreshold"), threshold + 1);

        // A read that fails is logged and gives a zero value.
        QCOMPARE(fixture.manager->getProperty<float>(node, "noSuchProperty"), 0.f);
        QVERIFY(log.contains("Could not get property noSuchProperty: "));
    }

private:
    EventsFixture fixture;
};

QTEST_MAIN(TestControl)
#include "tst_control.moc"
