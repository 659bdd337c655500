// The running program in this process: threads, connections, the simulated camera, the tree, the
// register/control actions, streaming states, hot-plug and the loss of the camera service.

#include "app/ViewerMain.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "info/InfoWidget.h"
#include "mainwindow/RecordingThread.h"
#include "mainwindow/ZerlaneViewer.h"
#include "support/ViewerTestSupport.h"
#include "tree/DeviceTreeModel.h"
#include "tree/DeviceTreeView.h"
#include "worker/PostponedCalls.h"
#include "worker/WorkingThread.h"

#include <QLabel>
#include <QtTest>

class TestMainWindow : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ViewerTest::isolateSettings();
        ViewerTest::useSteppedSimulator();
        window = ViewerMain::startProgram(qApp);
        events = ZerlaneThread::instance();
        model = qobject_cast<DeviceTreeModel*>(window->findChild<DeviceTreeView*>("treeView")->model());
        QVERIFY(ViewerTest::waitFor([this] { return model->rowCount() == 1 && model->rowCount(model->index(0, 0)) == 3; }));
    }

    void cleanupTestCase()
    {
        ViewerMain::shutDown();
    }

    void showsTheCameraWithItsNodesAndBuffers()
    {
        QCOMPARE(window->windowTitle(), QString("Zerlane Viewer"));
        const QModelIndex device = model->index(0, 0);
        QCOMPARE(model->rowCount(model->index(0, 0, device)), 8);
        QCOMPARE(model->rowCount(model->index(1, 0, device)), 1);
        QCOMPARE(model->rowCount(model->index(2, 0, device)), 1);
        QVERIFY(!action("actionRegisterNode")->isVisible());
        QVERIFY(!action("actionControlDevice")->isVisible());
        QCOMPARE(window->streamingStatusText(), QString("Stopped"));
    }

    void selectingANodeOffersItsActions()
    {
        DeviceTreeView* view = window->findChild<DeviceTreeView*>("treeView");
        const QModelIndex depth = model->index(0, 0, model->index(0, 0));
        view->setCurrentIndex(depth);
        QVERIFY(action("actionRegisterNode")->isVisible());
        QVERIFY(action("actionControlNode")->isVisible());
        QVERIFY(action("actionControlDevice")->isVisible());
        QVERIFY(!action("actionRegisterNode")->isChecked());
        auto* node = static_cast<NodeData*>(DeviceTreeModel::recordOf(depth));
        QCOMPARE(window->currentNode(), node);
        auto* info = window->findChild<InfoWidget*>("widgetInfo");
        QVERIFY(qobject_cast<QLabel*>(info->content())->text().contains("Depth Node"));

        // A buffer selects its node; a device selects no node.
        view->setCurrentIndex(model->index(3, 0, depth));
        QCOMPARE(window->currentNode(), node);
        view->setCurrentIndex(model->index(0, 0));
        QCOMPARE(window->currentNode(), static_cast<NodeData*>(nullptr));
        QVERIFY(!action("actionRegisterNode")->isVisible());
        QVERIFY(action("actionControlDevice")->isVisible());

        view->clearSelection();
        QVERIFY(!action("actionControlDevice")->isVisible());
        QVERIFY(qobject_cast<QLabel*>(info->content())->text().contains("No device or node selected"));
    }

    void registerAndControlTheSelectedNode()
    {
        DeviceTreeView* view = window->findChild<DeviceTreeView*>("treeView");
        const QModelIndex depth = model->index(0, 0, model->index(0, 0));
        view->setCurrentIndex(depth);
        auto* node = static_cast<NodeData*>(DeviceTreeModel::recordOf(depth));

        action("actionRegisterNode")->trigger();
        QVERIFY(node->registered);
        QVERIFY(action("actionRegisterNode")->isChecked());
        QCOMPARE(model->data(depth, Qt::FontRole).value<QFont>().weight(), QFont::Bold);
        QVERIFY(model->data(depth, Qt::FontRole).value<QFont>().italic());

        action("actionControlNode")->trigger();
        QVERIFY(node->controlled);
        QVERIFY(action("actionControlNode")->isChecked());
        QVERIFY(!model->data(depth, Qt::FontRole).value<QFont>().italic());
    }

    void startPauseAndStopChangeTheStatus()
    {
        CameraManager* manager = CameraManager::instance();
        auto findAction = [this](const char* name) { return window->findChild<QAction*>(name); };
        findAction("actionStartNodes")->trigger();
        QVERIFY(ViewerTest::waitFor([&] { return window->streamingStatusText() == "Streaming"; }));
        QCOMPARE(manager->streamingState(), int(CameraManager::Streaming));

        findAction("actionPauseNodes")->trigger();
        QCOMPARE(window->streamingStatusText(), QString("Frozen"));
        QCOMPARE(manager->streamingState(), int(CameraManager::Frozen));

        findAction("actionStartNodes")->trigger();
        QVERIFY(ViewerTest::waitFor([&] { return window->streamingStatusText() == "Streaming"; }));

        findAction("actionStopNodes")->trigger();
        QVERIFY(ViewerTest::waitFor([&] { return window->streamingStatusText() == "Stopped"; }));
        QCOMPARE(manager->streamingState(), int(CameraManager::Stopped));
    }

    void camerasArriveAndLeave()
    {
        Zerlane::Sim::Control::addCamera("ZS0900");
        QVERIFY(ViewerTest::waitFor([this] { return model->rowCount() == 2 && model->rowCount(model->index(1, 0)) == 3; }));
        QVERIFY(model->data(model->index(1, 0)).toString().contains("ZS0900"));

        // The first camera leaves while streaming: its rows go, the other camera stays.
        window->findChild<QAction*>("actionStartNodes")->trigger();
        QVERIFY(ViewerTest::waitFor([&] { return window->streamingStatusText() == "Streaming"; }));
        Zerlane::Sim::Control::step(2);
        const std::string first = CameraManager::instance()->devices().front()->device.getSerialNumber();
        Zerlane::Sim::Control::removeCamera(first);
        QVERIFY(ViewerTest::waitFor([this] { return model->rowCount() == 1; }));
        QVERIFY(model->data(model->index(0, 0)).toString().contains("ZS0900"));
        QCOMPARE(CameraManager::instance()->nodes().size(), size_t(3));
        QCOMPARE(window->currentNode(), static_cast<NodeData*>(nullptr));
    }

    void losingTheServiceShowsOneErrorAndQuits()
    {
        ViewerTest::MessageBoxRecorder boxes;
        QSignalSpy quitRequests(events, &ZerlaneThread::quitQApplication);
        Zerlane::Sim::Control::failTransport("connection reset");
        QVERIFY(ViewerTest::waitFor([&] { return quitRequests.size() == 1; }));
        QCOMPARE(boxes.texts, QStringList{"Zerlane Server was shut down unexpectedly"});
        QCOMPARE(boxes.titles, QStringList{"Error"});
        QVERIFY(!events->isLoopRunning());
        QTest::qWait(100);
        QCOMPARE(quitRequests.size(), 1);
    }

private:
    QAction* action(const char* name) const { return window->findChild<QAction*>(name); }

    ZerlaneThread* events = nullptr;
    ZerlaneViewer* window = nullptr;
    DeviceTreeModel* model = nullptr;
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
