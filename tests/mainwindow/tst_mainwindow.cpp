// The running program in this process: threads, connections, the simulated camera, the tree, the
// register/control actions, streaming states, hot-plug and the loss of the camera service.

#include "app/ViewerMain.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "info/InfoWidget.h"
#include "info/NodeInfoWidget.h"
#include "mainwindow/RecordingThread.h"
#include "mainwindow/ViewStatistics.h"
#include "mainwindow/ZerlaneViewer.h"
#include "support/ViewerTestSupport.h"
#include "tree/DeviceTreeModel.h"
#include "tree/DeviceTreeView.h"
#include "views/BufferSubWindow.h"
#include "worker/PostponedCalls.h"
#include "worker/WorkingThread.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
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
        auto* page = qobject_cast<NodeInfoWidget*>(info->content());
        QVERIFY(page);
        QCOMPARE(page->node(), node);

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

    void exportIsOfferedForAPausedDepthFrameOnly()
    {
        DeviceTreeView* view = window->findChild<DeviceTreeView*>("treeView");
        const QModelIndex depthRow = model->index(0, 0, model->index(0, 0));
        auto* depth = static_cast<NodeData*>(DeviceTreeModel::recordOf(depthRow));
        view->setCurrentIndex(depthRow);
        if (!depth->registered)
            action("actionRegisterNode")->trigger();
        QAction* csv = action("actionExportCurrentFrame");
        QAction* ply = action("actionExportPointCloud");
        QAction* snapshot = action("actionExportSnapshot");
        QVERIFY(!csv->isEnabled() && !ply->isEnabled() && !snapshot->isEnabled());

        window->onAddBuffer(depth->buffer(BufferData::Depth), QPoint(0, 0), QSize(320, 300), false, 0, 0, 0.5f, 0.5f, 0, 0);
        QVERIFY(snapshot->isEnabled()); // a view is active
        action("actionStartNodes")->trigger();
        QVERIFY(ViewerTest::waitFor([&] { return window->streamingStatusText() == "Streaming"; }));
        QVERIFY(!csv->isEnabled()); // streaming: the frame would change under the export
        QVERIFY(ViewerTest::waitFor([&] {
            Zerlane::Sim::Control::step();
            return depth->dataReceived.load();
        }));
        action("actionPauseNodes")->trigger();
        QVERIFY(csv->isEnabled() && ply->isEnabled());

        view->setCurrentIndex(model->index(1, 0, model->index(0, 0))); // the colour node
        QVERIFY(!csv->isEnabled() && !ply->isEnabled());
        view->setCurrentIndex(depthRow);
        QVERIFY(csv->isEnabled());

        action("actionStopNodes")->trigger();
        QVERIFY(ViewerTest::waitFor([&] { return window->streamingStatusText() == "Stopped"; }));
        QVERIFY(!csv->isEnabled());
        depth->buffer(BufferData::Depth)->subWindow->close();
        QVERIFY(ViewerTest::waitFor([&] { return !snapshot->isEnabled(); }));
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

    void viewStatisticsTurnCountsIntoRatesAndResetThem()
    {
        QCOMPARE(ViewStatistics::infoLine(5.4, 29.6, 120.0),
                 QString("Frame rate :  5      Event rate : 30      Paint rate : 120"));

        QElapsedTimer outer;
        outer.start();
        ViewStatistics statistics;
        auto* node = new NodeData(Zerlane::Node(), nullptr, {});
        auto* buffer = new BufferData(node, BufferData::Depth);
        node->buffers = {buffer};
        node->sampleCount = 30;
        buffer->frameCount = 15;
        QTest::qSleep(50);
        statistics.closeInterval({node});
        const double longest = std::max<qint64>(1, outer.elapsed());

        // Counts over at least 50 ms and at most the time measured around them.
        const double eventRate = statistics.eventRate(node);
        QVERIFY(eventRate >= 30 * 1000.0 / longest && eventRate <= 30 * 1000.0 / 50);
        QCOMPARE(node->sampleCount.load(), 0);
        const QString line = statistics.takeViewLine(buffer, 10);
        QCOMPARE(buffer->frameCount.load(), 0);
        const QRegularExpressionMatch rates =
            QRegularExpression("Frame rate : +(\\d+) +Event rate : +(\\d+) +Paint rate : +(\\d+)").match(line);
        QVERIFY2(rates.hasMatch(), qPrintable(line));
        QVERIFY(qAbs(rates.captured(1).toDouble() - eventRate / 2) <= 1);
        QVERIFY(qAbs(rates.captured(2).toDouble() - eventRate) <= 1);
        QVERIFY(qAbs(rates.captured(3).toDouble() - eventRate / 3) <= 1);
        QCOMPARE(statistics.eventRate(nullptr), 0.0);
        node->release();
    }

    void preferencesTakeEffectWithoutRestarting()
    {
        QAction* preferences = action("actionPreferences");
        QVERIFY(preferences->isEnabled());
        QTimer::singleShot(0, this, [] {
            QWidget* dialog = QApplication::activeModalWidget();
            QVERIFY(dialog && dialog->objectName() == "PreferencesDialog");
            dialog->findChild<QSpinBox*>("sbDots")->setValue(6);
            dialog->findChild<QCheckBox*>("cbTriangles")->setChecked(true);
            dialog->findChild<QCheckBox*>("cbShowAxis")->setChecked(false);
            dialog->findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Ok)->click();
        });
        preferences->trigger();
        const DisplayPreferences shown = CameraManager::instance()->displayPreferences();
        QCOMPARE(shown.dotSize, 6);
        QVERIFY(shown.displayTriangles);
        QVERIFY(!shown.displayAxis);
    }

    void losingTheServiceShowsOneErrorAndQuits()
    {
        ViewerTest::MessageBoxRecorder boxes;
        // The event thread emits; counting on the GUI thread keeps the count unshared.
        int quitRequests = 0;
        QObject receiver;
        connect(events, &ZerlaneThread::quitQApplication, &receiver, [&] { ++quitRequests; }, Qt::QueuedConnection);
        Zerlane::Sim::Control::failTransport("connection reset");
        QVERIFY(ViewerTest::waitFor([&] { return quitRequests == 1; }));
        QCOMPARE(boxes.texts, QStringList{"Zerlane Server was shut down unexpectedly"});
        QCOMPARE(boxes.titles, QStringList{"Error"});
        QVERIFY(!events->isLoopRunning());
        QTest::qWait(100);
        QCOMPARE(quitRequests, 1);
    }

private:
    QAction* action(const char* name) const { return window->findChild<QAction*>(name); }

    ZerlaneThread* events = nullptr;
    ZerlaneViewer* window = nullptr;
    DeviceTreeModel* model = nullptr;
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
