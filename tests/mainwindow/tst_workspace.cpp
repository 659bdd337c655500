// The workspace through the running program: written to the disk by a real close of the window, and
// brought back when the same cameras connect again in the next run, each matched by its serial
// number; saved values that make no sense are skipped or clamped; the restore's failure paths.

#include "app/ViewerMain.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "mainwindow/ZerlaneViewer.h"
#include "support/ViewerTestSupport.h"
#include "views/BufferDisplayWidget.h"
#include "views/BufferSubWindow.h"
#include "views/ViewCamera.h"
#include "worker/Settings.h"
#include "worker/WorkingThread.h"

#include <QFile>
#include <QMdiArea>
#include <QtTest>

using Zerlane::plugin::FaultInjector;

class TestWorkspace : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ViewerTest::isolateSettings();
        ViewerTest::useSteppedSimulator();
    }

    void cleanup()
    {
        if (ZerlaneViewer::existingInstance())
            ViewerMain::shutDown();
        FaultInjector::clear();
        Zerlane::Sim::Control::reset();
        Zerlane::Sim::Control::setStepped(true);
    }

    void twoCamerasOfOneModelComeBackEachByItsSerial()
    {
        Settings::setAutoSaveWorkspace(true);
        const std::string second = Zerlane::Sim::Control::addCamera();
        start(2);
        DeviceData* a = device(0);
        DeviceData* b = device(1);
        QVERIFY(a->device.getSerialNumber() != b->device.getSerialNumber());

        // Camera A: controlled, a maximised depth view, QVGA at 15 fps, illumination 33.
        manager()->controlDevice(a, true);
        NodeData* depthA = a->nodes[0];
        BufferSubWindow* depthView = open(depthA, BufferData::Depth);
        manager()->setDepthConfiguration(depthA, {Zerlane::FRAME_FORMAT_QVGA, 15, Zerlane::CAMERA_MODE_LONG_RANGE, false}, true);
        QVERIFY(manager()->setProperty<int32_t>(depthA, "illuminationLevel", 33));

        // Camera B: a 3D view with a moved camera, its colour node in HD, its depth threshold at 250.
        NodeData* depthB = b->nodes[0];
        NodeData* colorB = b->nodes[1];
        BufferSubWindow* cloud = open(depthB, BufferData::VerticesFloatingPoint);
        viewIn(cloud)->setCamera(0.1f, -0.2f, 1.5f, 2.5f, 30.f, -20.f);
        manager()->controlNode(depthB, true);
        QVERIFY(manager()->setProperty<int32_t>(depthB, "confidenceThreshold", 250));
        manager()->controlNode(depthB, false);
        manager()->controlNode(colorB, true);
        manager()->setColorConfiguration(colorB, {Zerlane::FRAME_FORMAT_HD720, Zerlane::COMPRESSION_TYPE_YUY2, 15,
                                                  Zerlane::POWER_LINE_FREQUENCY_60HZ}, true);
        manager()->controlNode(colorB, false);
        depthView->showMaximized(); // last: a view opened after a maximised one is maximised too

        // A real close of the window writes the workspace to the disk.
        QVERIFY(window()->close());
        QFile file(Settings::store().fileName());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString onDisk = QString::fromUtf8(file.readAll());
        for (const char* key : {"autoSaveWorkspace=true", "devices\\size=2", "nodes\\size=6", "buffers\\size=2",
                                "devices\\0\\controlled=true", "illuminationLevel=33", "confidenceThreshold=250",
                                "buffers\\0\\isMaximized=true", "isMaximized=false"})
            QVERIFY2(onDisk.contains(key), qPrintable(QString(key) + "\n" + onDisk.section("[workspace]", 1)));
        QVERIFY(onDisk.contains(QString("serial=%1").arg(QString::fromStdString(second))));
        ViewerMain::shutDown();

        // The next run: both cameras are found again, each with its own state.
        start(2);
        waitForRestores();
        DeviceData* again[2] = {device(0), device(1)};
        for (DeviceData* camera : again) {
            NodeData* depth = camera->nodes[0];
            const bool isA = camera->device.getSerialNumber() != second;
            const Zerlane::Interface depthInterface(depth->node);
            if (isA) {
                QVERIFY(depth->controlled);
                QCOMPARE(Zerlane::DepthNode(depth->node).getConfiguration().frameRate, 15);
                QCOMPARE(Zerlane::Property<int32_t>::getValue(depthInterface, "illuminationLevel"), 33);
                BufferData* shown = depth->buffer(BufferData::Depth);
                QVERIFY(shown->subWindow);
                QVERIFY(shown->subWindow->isMaximized());
                QVERIFY(!depth->buffer(BufferData::VerticesFloatingPoint)->subWindow);
            } else {
                QVERIFY(!depth->controlled);
                QCOMPARE(Zerlane::Property<int32_t>::getValue(depthInterface, "confidenceThreshold"), 250);
                QCOMPARE(Zerlane::ColorNode(camera->nodes[1]->node).getConfiguration().frameFormat,
                         Zerlane::FRAME_FORMAT_HD720);
                BufferData* shown = depth->buffer(BufferData::VerticesFloatingPoint);
                QVERIFY(shown->subWindow);
                float x, y, z, distance, pan, tilt;
                viewIn(shown->subWindow)->getCamera(&x, &y, &z, &distance, &pan, &tilt);
                QCOMPARE(z, 1.5f);
                QCOMPARE(distance, 2.5f);
                QCOMPARE(pan, 30.f);
                QCOMPARE(tilt, -20.f);
                QVERIFY(!depth->buffer(BufferData::Depth)->subWindow);
            }
        }

        // A camera never seen before restores nothing.
        const std::string third = Zerlane::Sim::Control::addCamera();
        QVERIFY(ViewerTest::waitFor([&] { return manager()->deviceCount() == 3 && device(2)->nodes.size() == 3; }));
        waitForRestores();
        for (NodeData* node : device(2)->nodes) {
            QVERIFY(!node->controlled && !node->registered);
            for (BufferData* buffer : node->buffers)
                QVERIFY(!buffer->subWindow);
        }
        QCOMPARE(Zerlane::DepthNode(device(2)->nodes[0]->node).getConfiguration().frameRate, 30);
    }

    void senselessSavedValuesAreSkippedOrClamped()
    {
        Settings::setAutoSaveWorkspace(true);
        Settings::clearWorkspace();
        const float inf = std::numeric_limits<float>::infinity();
        Settings::setCameraPan(0, inf);
        Settings::setCameraTilt(0, std::numeric_limits<float>::quiet_NaN());
        Settings::setCameraTargetDistance(0, 1e38f);
        Settings::setValue("workspace/size", QSize(-5, 900000));
        Settings::setValue("workspace/pos", QPoint(-400000, 300000));
        Settings::setValue("workspace/devices/size", 1);
        Settings::setValue("workspace/devices/0/serial", "ZS0001");
        Settings::setValue("workspace/nodes/size", 100000);
        Settings::setValue("workspace/nodes/0/device", 7); // no such device
        Settings::setValue("workspace/nodes/0/type", "ZT-Sim Depth Node");
        Settings::setValue("workspace/nodes/1/device", 0);
        Settings::setValue("workspace/nodes/1/type", "ZT-Sim Depth Node");
        Settings::setValue("workspace/nodes/1/config/format", "garbage");
        Settings::setValue("workspace/nodes/1/properties/illuminationLevel", "a lot");
        Settings::setValue("workspace/nodes/1/properties/confidenceThreshold", 77);
        Settings::setValue("workspace/buffers/size", 100000);
        Settings::setValue("workspace/buffers/0/node", 1);
        Settings::setValue("workspace/buffers/0/type", 42);
        Settings::setValue("workspace/buffers/1/node", 1);
        Settings::setValue("workspace/buffers/1/type", int(BufferData::VerticesFloatingPoint));
        Settings::setValue("workspace/buffers/1/size", QSize(-10, -10));
        Settings::setValue("workspace/buffers/1/position", QPoint(900000, -900000));
        Settings::setValue("workspace/buffers/1/camera/pan", "inf");
        Settings::setValue("workspace/buffers/1/camera/distance", -3);
        Settings::setValue("workspace/buffers/2/node", -1);
        Settings::setValue("workspace/buffers/2/type", -1);

        ViewerTest::MessageBoxRecorder boxes;
        ViewerTest::LogRecorder quiet(true);
        QElapsedTimer clock;
        clock.start();
        start(1);
        waitForRestores();
        QVERIFY(clock.elapsed() < 5000); // the size keys do not make the restore walk 100,000 records
        const QRect screen = window()->screen()->availableGeometry();
        QVERIFY(screen.intersects(window()->frameGeometry()));
        QVERIFY(window()->height() <= screen.height());

        NodeData* depth = device(0)->nodes[0];
        BufferData* cloud = depth->buffer(BufferData::VerticesFloatingPoint);
        QVERIFY(cloud->subWindow);
        const QRect area = cloud->subWindow->mdiArea()->viewport()->rect();
        QVERIFY(area.contains(cloud->subWindow->pos()));
        QVERIFY(cloud->subWindow->width() > 0);
        float x, y, z, distance, pan, tilt;
        viewIn(cloud->subWindow)->getCamera(&x, &y, &z, &distance, &pan, &tilt);
        QCOMPARE(pan, 0.f);
        QVERIFY(distance > 0.f);
        // The presets' senseless values: a finite camera, and a left drag returns.
        viewIn(cloud->subWindow)->applyPreset(0);
        viewIn(cloud->subWindow)->getCamera(&x, &y, &z, &distance, &pan, &tilt);
        QVERIFY(std::isfinite(pan) && std::isfinite(tilt) && std::isfinite(distance));
        QVERIFY(distance <= 100000.f);
        ViewCamera camera;
        camera.pan = std::numeric_limits<float>::infinity();
        camera.rotate(10, 0, 100); // returns, with an angle
        QVERIFY(camera.pan >= 0.f && camera.pan < 360.f);

        // The saved configuration did not convert: the camera refused it, the rest went on.
        QCOMPARE(Zerlane::Property<int32_t>::getValue(Zerlane::Interface(depth->node), "confidenceThreshold"), 77);
        QCOMPARE(Zerlane::Property<int32_t>::getValue(Zerlane::Interface(depth->node), "illuminationLevel"), 80);
        QCOMPARE(boxes.texts.size(), 1);
        QVERIFY(boxes.texts[0].startsWith("Could not set node configuration automatically:   \n\n"));
    }

    void refusedPropertiesAreCountedAndEveryRestoreEndsOnce()
    {
        Settings::setAutoSaveWorkspace(true);
        Settings::clearWorkspace();
        Settings::setValue("workspace/devices/size", 1);
        Settings::setValue("workspace/devices/0/serial", "ZS0001");
        Settings::setValue("workspace/nodes/size", 1);
        Settings::setValue("workspace/nodes/0/device", 0);
        Settings::setValue("workspace/nodes/0/type", "ZT-Sim Depth Node");
        Settings::setValue("workspace/nodes/0/config/format", int(Zerlane::FRAME_FORMAT_VGA));
        Settings::setValue("workspace/nodes/0/config/frameRate", 25);
        Settings::setValue("workspace/nodes/0/config/mode", int(Zerlane::CAMERA_MODE_LONG_RANGE));
        Settings::setValue("workspace/nodes/0/properties/illuminationLevel", 500); // out of the camera's range
        Settings::setValue("workspace/nodes/0/properties/confidenceThreshold", 99);
        Settings::setValue("workspace/nodes/0/registered", true);

        ViewerTest::MessageBoxRecorder boxes;
        start(1);
        QSignalSpy jobs(WorkingThread::instance(), &WorkingThread::jobDone);
        waitForRestores();
        NodeData* depth = device(0)->nodes[0];
        QCOMPARE(Zerlane::DepthNode(depth->node).getConfiguration().frameRate, 25);
        QCOMPARE(Zerlane::Property<int32_t>::getValue(Zerlane::Interface(depth->node), "confidenceThreshold"), 99);
        QVERIFY(ViewerTest::waitFor([&] { return depth->registered; }));
        QVERIFY(!depth->controlled); // control was taken for the restore only
        QVERIFY(ViewerTest::waitFor([&] { return boxes.texts.size() == 1; }));
        QCOMPARE(boxes.texts[0], QString("1 properties could not be set automatically."));

        // A camera that leaves while its restore waits for its serial number: one jobDone per node.
        jobs.clear();
        FaultInjector::inject("Device::getSerialNumber", FaultInjector::Kind::Transport, "gone", -1);
        ViewerTest::LogRecorder log(true);
        const std::string serial = Zerlane::Sim::Control::addCamera();
        QVERIFY(ViewerTest::waitFor([&] { return jobs.count() >= 3; }));
        Zerlane::Sim::Control::removeCamera(serial);
        QTest::qWait(100);
        QCOMPARE(jobs.count(), 3);
        QVERIFY(log.warnings().contains("could not get serial number: gone"));
    }

private:
    static CameraManager* manager() { return CameraManager::instance(); }
    static ZerlaneViewer* window() { return ZerlaneViewer::instance(); }
    static DeviceData* device(int row) { return manager()->deviceAt(row); }

    static void start(int cameras)
    {
        ViewerMain::startProgram(qApp);
        QVERIFY(ViewerTest::waitFor([cameras] {
            if (manager()->deviceCount() != cameras)
                return false;
            for (int i = 0; i < cameras; ++i) {
                if (device(i)->nodes.size() != 3)
                    return false;
            }
            return true;
        }));
    }

    // Every node's restore has ended (the window drops its hold on jobDone).
    static void waitForRestores()
    {
        QVERIFY(ViewerTest::waitFor([] {
            for (NodeData* node : manager()->nodes()) {
                if (node->activeCount() != 0)
                    return false;
            }
            return true;
        }, 10000));
        QCoreApplication::processEvents();
    }

    static BufferSubWindow* open(NodeData* node, uint32_t kind)
    {
        window()->onAddBuffer(node->buffer(kind), QPoint(10, 10), QSize(320, 300), false, 0.f, 0.f, 0.5f, 0.5f, 0.f, 0.f);
        return node->buffer(kind)->subWindow;
    }

    static BufferDisplayWidget* viewIn(BufferSubWindow* window)
    {
        return qobject_cast<BufferDisplayWidget*>(window->widget());
    }
};

QTEST_MAIN(TestWorkspace)
#include "tst_workspace.moc"
