// Registration, control and typed properties, with the messages their failures give and what the
// manager tells the window about them (a listener of the test's own stands in for the window).

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
        const QStringList& warnings = fixture.listener.warnings;
        NodeData* node = fixture.depth;
        fixture.manager->registerNode(node, true);
        QVERIFY(node->registered);

        FaultInjector::inject("Context::unregisterNode", FaultInjector::Kind::Exception, "camera busy", 1);
        fixture.manager->registerNode(node, false);
        QVERIFY(node->registered); // unchanged by the failure
        QCOMPARE(warnings, QStringList{"Could not unregister node : camera busy"});

        fixture.manager->registerNode(node, false);
        QVERIFY(!node->registered);
        // The window hears of every attempt, failed or not, so that its marks follow the flag.
        QCOMPARE(fixture.listener.registrations, (std::vector<DeviceNodeBufferData*>{node, node, node}));

        fixture.manager->registerDevice(fixture.deviceRecord, true);
        QVERIFY(fixture.deviceRecord->registered);
        QCOMPARE(fixture.listener.registrations.back(), fixture.deviceRecord);
    }

    void controllingADeviceAndItsFailures()
    {
        const QStringList& warnings = fixture.listener.warnings;
        ViewerTest::LogRecorder log;
        DeviceData* device = fixture.deviceRecord;

        // Another client holds the camera: the two-line warning, nothing changes.
        Zerlane::Sim::Control::setControlledByAnotherClient(device->device.getSerialNumber(), true);
        fixture.manager->controlDevice(device, true);
        QVERIFY(!device->controlled);
        QCOMPARE(warnings, QStringList{"Another application has already\nclaimed control over this device."});
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
        QCOMPARE(warnings.size(), 1);

        fixture.manager->controlDevice(device, false);
        QVERIFY(!device->controlled);
        for (NodeData* node : device->nodes)
            QVERIFY(!node->controlled);
        QCOMPARE(fixture.listener.controls.size(), size_t(5));
        QCOMPARE(fixture.listener.controls.front(), device);
    }

    void typedPropertiesAndTheirRefusals()
    {
        const QStringList& warnings = fixture.listener.warnings;
        ViewerTest::LogRecorder log;
        NodeData* node = fixture.depth;

        // A successful set clears the data-received flag even when the value does not change.
        const bool before = fixture.manager->getProperty<bool>(node, "enableDepthMap");
        node->dataReceived = true;
        QVERIFY(fixture.manager->setProperty<bool>(node, "enableDepthMap", before));
        QVERIFY(!node->dataReceived);
        QCOMPARE(fixture.listener.propertiesSet, std::vector<DeviceNodeBufferData*>{node});

        // Writing a camera property needs control: refused, reported, and the value stays.
        const int32_t threshold = fixture.manager->getProperty<int32_t>(node, "confidenceThreshold");
        node->dataReceived = true;
        QVERIFY(!fixture.manager->setProperty<int32_t>(node, "confidenceThreshold", threshold + 1));
        QVERIFY(node->dataReceived);
        QCOMPARE(warnings.size(), 1);
        QVERIFY2(warnings.first().startsWith("Could not set property confidenceThreshold: "), qPrintable(warnings.first()));
        QCOMPARE(fixture.listener.propertiesSet.size(), size_t(1));
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
