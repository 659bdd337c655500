// Opening and closing buffer views: titles, the node properties they switch, drops, the
// registration line, tiling, and a node that leaves while shown. Runs the real program objects
// over the stepped simulated camera.

#include "app/shared/TextUtils.h"
#include "app/ViewerMain.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "mainwindow/RecordingThread.h"
#include "mainwindow/ZerlaneViewer.h"
#include "support/ViewerTestSupport.h"
#include "tree/DeviceTreeModel.h"
#include "tree/DeviceTreeView.h"
#include "views/BufferDisplayWidget.h"
#include "views/BufferSubWindow.h"
#include "views/DisplayWidget.h"
#include "views/MdiArea.h"
#include "views/PixelReadout.h"
#include "worker/PostponedCalls.h"
#include "worker/Settings.h"
#include "worker/WorkingThread.h"

// Mouse events of QTest go through the window, as the window system's do.
#define QTEST_QPA_MOUSE_HANDLING

#include <QDataStream>
#include <QLabel>
#include <QMimeData>
#include <QScopeGuard>
#include <QScrollBar>
#include <QtTest>

class TestSubWindows : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ViewerTest::isolateSettings();
        ViewerTest::useSteppedSimulator();
        window = ViewerMain::startProgram(qApp);
        events = ZerlaneThread::instance();
        window->resize(1400, 900);
        QVERIFY(ViewerTest::waitFor([this] { return CameraManager::instance()->nodes().size() == 3; }));
        for (NodeData* node : CameraManager::instance()->nodes()) {
            if (node->node.is<Zerlane::DepthNode>())
                depth = node;
        }
        QVERIFY(depth);
    }

    void cleanupTestCase()
    {
        area()->closeAllSubWindows();
        ViewerMain::shutDown();
    }

    // Runs first, before the window has held any view. Opening one must leave the window's native
    // window as it is: re-created, it loses the release of the double click that opened the view, and
    // the tree keeps the pointer from every view until the next click.
    void theFirstViewOpenedByADoubleClickFollowsThePointer()
    {
        CameraManager::instance()->registerNode(depth, true);
        // The later cases expect no view open and the node not registered, whatever happens here.
        const auto restore = qScopeGuard([this] {
            area()->closeAllSubWindows();
            CameraManager::instance()->registerNode(depth, false);
        });
        QVERIFY(QTest::qWaitForWindowExposed(window));
        const WId native = window->winId();
        DeviceTreeView* tree = window->findChild<DeviceTreeView*>("treeView");
        tree->expandAll();
        const QRect row = tree->visualRect(model()->indexOf(buffer(BufferData::Depth)));
        QTest::mouseDClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, row.center());
        BufferSubWindow* sub = buffer(BufferData::Depth)->subWindow;
        QVERIFY(sub);
        QVERIFY(QTest::qWaitForWindowExposed(sub));
        QCOMPARE(window->winId(), native);

        // Hovering, with no click in between, reaches the view.
        auto* view = qobject_cast<BufferDisplayWidget*>(sub->widget());
        QTest::mouseMove(view->displayWidget(), QPoint(30, 30));
        QVERIFY(ViewerTest::waitFor([&] { return view->displayWidget()->mouseInside(); }, 2000));
    }

    void titleNamesBufferModelAndSerial()
    {
        BufferData* map = buffer(BufferData::Depth);
        const QString model = QString::fromStdString(Zerlane::Device::Model_toString(depth->device->device.getModel()));
        const QString serial = QString::fromStdString(depth->device->device.getSerialNumber());
        QCOMPARE(MdiArea::titleFor(map), QString("Depth [%1 - %2]").arg(model, serial));

        ViewerTest::LogRecorder log;
        Zerlane::plugin::FaultInjector::inject("Device::getSerialNumber", Zerlane::plugin::FaultInjector::Kind::Exception,
                                               "serial unreadable", 1);
        BufferSubWindow* sub = area()->openView(map);
        QCOMPARE(sub->windowTitle(), QString());
        QVERIFY(log.contains("Could not create sub-window title: serial unreadable"));
        sub->close();
        QVERIFY(!map->subWindow);
    }

    void aMapStaysOnUntilItsLastViewCloses()
    {
        CameraManager* manager = CameraManager::instance();
        auto enabled = [&](const char* name) { return manager->getProperty<bool>(depth, name); };
        BufferData* floating = buffer(BufferData::DepthFloatingPoint);
        BufferData* deviation = buffer(BufferData::StandardDeviation);
        BufferSubWindow* first = area()->openView(floating);
        BufferSubWindow* second = area()->openView(deviation);
        QVERIFY(enabled("enableDepthMapFloatingPoint"));
        first->close();
        QVERIFY(enabled("enableDepthMapFloatingPoint"));
        second->close();
        QVERIFY(!enabled("enableDepthMapFloatingPoint"));

        // A view closed for a rebuild leaves the property alone.
        BufferSubWindow* view = area()->openView(floating);
        floating->reopening = true;
        view->close();
        QVERIFY(enabled("enableDepthMapFloatingPoint"));
        manager->switchMapOff(floating); // the use the rebuilt view would have kept
        QVERIFY(!enabled("enableDepthMapFloatingPoint"));

        // "Combined" switches the confidence map on too, and never off.
        auto* combined = new BufferData(depth, BufferData::Combined);
        depth->buffers.push_back(combined);
        BufferSubWindow* mixed = area()->openView(combined);
        QVERIFY(enabled("enablePhaseMap"));
        QVERIFY(enabled("enableConfidenceMap"));
        mixed->close();
        QVERIFY(!enabled("enablePhaseMap"));
        QVERIFY(enabled("enableConfidenceMap"));
        depth->buffers.pop_back();
        combined->release();
        manager->setProperty<bool>(depth, "enableConfidenceMap", false);
    }

    void dropsOpenOnlyNotYetShownBuffers()
    {
        MdiArea* area = this->area();
        BufferData* phase = buffer(BufferData::Phase);
        auto drop = [&](qint64 address) {
            QByteArray bytes;
            QDataStream stream(&bytes, QIODevice::WriteOnly);
            stream << address;
            QMimeData mime;
            mime.setData(MdiArea::DragMimeType, bytes);
            // As a real drag: the area accepts the entering drag, then receives the drop.
            QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(area->viewport(), &enter);
            QVERIFY(enter.isAccepted());
            QDropEvent event(QPointF(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(area->viewport(), &event);
        };
        const int before = area->subWindowList().size();
        drop(qint64(quintptr(depth)));         // a node: ignored
        drop(qint64(0x1234));                  // not a record: ignored
        QCOMPARE(area->subWindowList().size(), before);
        drop(qint64(quintptr(phase)));
        QCOMPARE(area->subWindowList().size(), before + 1);
        QVERIFY(phase->subWindow);
        drop(qint64(quintptr(phase)));         // already shown: nothing more
        QCOMPARE(area->subWindowList().size(), before + 1);
        QCOMPARE(model()->data(model()->indexOf(phase), Qt::FontRole).value<QFont>().weight(),
                 QFont::Bold);
        phase->subWindow->close();
    }

    void anUnregisteredNodeSaysSoInRed()
    {
        BufferData* confidence = buffer(BufferData::Confidence);
        QVERIFY(!depth->registered);
        BufferSubWindow* sub = area()->openView(confidence);
        auto* view = qobject_cast<BufferDisplayWidget*>(sub->widget());
        QCOMPARE(view->interactiveInfo(), QString("Node not registered"));
        auto* label = view->findChild<QLabel*>("interactiveInfoLabel");
        QCOMPARE(label->palette().color(QPalette::WindowText), QColor(255, 0, 0));

        // Registering the node tells the window, which clears the line of every view of the node.
        CameraManager::instance()->registerNode(depth, true);
        QCOMPARE(view->interactiveInfo(), QString());
        QCOMPARE(label->palette().color(QPalette::WindowText), QColor(0, 0, 0));
        CameraManager::instance()->registerNode(depth, false);
        QCOMPARE(view->interactiveInfo(), QString("Node not registered"));
        CameraManager::instance()->registerNode(depth, true);
        sub->close();
    }

    void labelTexts()
    {
        QCOMPARE(BufferDisplayWidget::accelerationText(0.f, -1.f, 0.5f), QString("0.000 -1.000 0.500"));
        QCOMPARE(BufferDisplayWidget::accelerationText(12.25f, 0.f, 0.f), QString("12.250 0.000 0.000"));
        QCOMPARE(timeText(qint64(1500000)), QString("1.500000"));
        QCOMPARE(timeText(qint64(-1500000)), QString("-1.500000"));
        QCOMPARE(timeText(qint64(3000000000LL)), QString("3000.967296"));
    }

    void streamingFillsTheLabelsAndTheInfoLine()
    {
        CameraManager* manager = CameraManager::instance();
        manager->registerNode(depth, true);
        BufferSubWindow* sub = area()->openView(buffer(BufferData::Depth));
        auto* view = qobject_cast<BufferDisplayWidget*>(sub->widget());
        window->findChild<QAction*>("actionStartNodes")->trigger();
        QVERIFY(ViewerTest::waitFor([&] { return window->streamingStatusText() == "Streaming"; }));
        Zerlane::Sim::Control::step(3);
        auto* capture = view->findChild<QLabel*>("timeOfCaptureLabel");
        QVERIFY(ViewerTest::waitFor([&] { return capture->text() != "-"; }));
        QVERIFY(QRegularExpression("^\\d+\\.\\d{6}$").match(capture->text()).hasMatch());
        QCOMPARE(view->findChild<QLabel*>("droppedFramesLabel")->text(), QString("0"));
        QVERIFY(view->findChild<QLabel*>("accelerationLabel")->text().contains("1.0") ||
                view->findChild<QLabel*>("accelerationLabel")->text().contains("0.9"));
        QVERIFY(ViewerTest::waitFor([&] { return view->info().startsWith("Frame rate : "); }, 2500));
        QVERIFY2(QRegularExpression("^Frame rate : +\\d+      Event rate : +\\d+      Paint rate : +\\d+$")
                     .match(view->info()).hasMatch(),
                 qPrintable(view->info()));
        window->findChild<QAction*>("actionStopNodes")->trigger();
        QVERIFY(ViewerTest::waitFor([&] { return window->streamingStatusText() == "Stopped"; }));
        sub->close();
    }

    void aThreeDReadoutFollowsItsCameraAtOnceAndIsShownWhole()
    {
        CameraManager::instance()->registerNode(depth, true);
        BufferSubWindow* sub = area()->openView(buffer(BufferData::VerticesFloatingPoint));
        const auto close = qScopeGuard([&] {
            sub->close();
            CameraManager::instance()->registerNode(depth, false);
        });
        auto* view = qobject_cast<BufferDisplayWidget*>(sub->widget());
        QVERIFY(view->isThreeDimensional());
        area()->setActiveSubWindow(sub);
        QVERIFY(QTest::qWaitForWindowExposed(sub));
        view->refresh();
        auto shown = [&] {
            float x, y, z, distance, pan, tilt;
            view->getCamera(&x, &y, &z, &distance, &pan, &tilt);
            return PixelReadout::cameraText(x, y, z, distance, tilt, pan);
        };
        QCOMPARE(view->interactiveInfo(), shown());

        // A preset button: the line tells the new camera before any periodic refresh, negative
        // numbers and all.
        Settings::setCameraTargetX(Settings::Left, -1.25f);
        Settings::setCameraTargetY(Settings::Left, -0.5f);
        Settings::setCameraTargetZ(Settings::Left, 2.75f);
        Settings::setCameraTargetDistance(Settings::Left, 13.5f);
        Settings::setCameraPan(Settings::Left, 225.f);
        Settings::setCameraTilt(Settings::Left, -30.f);
        window->findChild<QAction*>("actionViewLeft")->trigger();
        QCOMPARE(view->interactiveInfo(), PixelReadout::cameraText(-1.25f, -0.5f, 2.75f, 13.5f, -30.f, 225.f));
        view->setCamera(0.f, 0.f, 1.f, 2.f, 10.f, 20.f);
        QCOMPARE(view->interactiveInfo(), shown());

        // At the size the view opened with, the whole line is on screen: wrapped, not cut.
        window->findChild<QAction*>("actionViewLeft")->trigger();
        QCoreApplication::processEvents();
        auto* label = view->findChild<QLabel*>("interactiveInfoLabel");
        QVERIFY(label->wordWrap());
        QVERIFY(label->fontMetrics().horizontalAdvance(label->text()) > label->width()); // it does wrap here
        QVERIFY(label->height() >= label->heightForWidth(label->width()));
        QVERIFY(view->rect().contains(label->geometry()));
        // So is it in the smallest view, where the labels under the line keep their room too.
        sub->resize(sub->minimumSizeHint());
        QCoreApplication::processEvents();
        QVERIFY(label->height() >= label->heightForWidth(label->width()));
        auto* below = view->findChild<QLabel*>("labelInfo");
        QVERIFY(below->height() >= below->sizeHint().height());
        QVERIFY(label->geometry().bottom() < below->geometry().top());
    }

    void tileFitsTheAreaAndNeverResizesTheWindow()
    {
        MdiArea* area = this->area();
        const QSize windowSize = window->size();
        QList<BufferSubWindow*> subs;
        for (uint32_t type : {BufferData::Phase, BufferData::Confidence, BufferData::Depth, BufferData::DepthFloatingPoint,
                              BufferData::Vertices, BufferData::VerticesFloatingPoint, BufferData::UV})
            subs << area->openView(buffer(type));
        subs.first()->showMaximized();
        QCoreApplication::processEvents(); // laid out, as views are by the time the user tiles them
        auto tile = [&] {
            window->findChild<QAction*>("actionTile")->trigger();
            QCoreApplication::processEvents();
        };

        // Seven views are more than the area holds: they keep their size and the area scrolls down.
        tile();
        QCOMPARE(window->size(), windowSize);
        QVERIFY(!subs.first()->isMaximized());
        for (BufferSubWindow* sub : subs) {
            QVERIFY(sub->width() >= sub->minimumSizeHint().width());
            QVERIFY(sub->height() >= sub->minimumSizeHint().height());
            QVERIFY(sub->geometry().left() >= 0 && sub->geometry().right() <= area->viewport()->rect().right());
            for (BufferSubWindow* other : subs)
                QVERIFY(other == sub || !other->geometry().intersects(sub->geometry()));
        }
        QVERIFY(area->verticalScrollBar()->isVisible());
        area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
        QVERIFY(area->viewport()->rect().contains(subs.last()->geometry()));

        // Two fit side by side: both lie wholly inside the area, and nothing scrolls.
        while (subs.size() > 2)
            subs.takeLast()->close();
        tile();
        QCOMPARE(window->size(), windowSize);
        QVERIFY(!area->verticalScrollBar()->isVisible());
        for (BufferSubWindow* sub : subs)
            QVERIFY(area->viewport()->rect().contains(sub->geometry()));
        QCOMPARE(subs[0]->geometry().top(), subs[1]->geometry().top());
        for (BufferSubWindow* sub : subs)
            sub->close();
    }

    void aDepthViewIsRebuiltWhenItsMapSwitchesToThreePlanes()
    {
        CameraManager* manager = CameraManager::instance();
        BufferData* map = buffer(BufferData::Depth);
        BufferSubWindow* flat = area()->openView(map);
        flat->setGeometry(40, 30, 420, 380);
        const QRect geometry = flat->geometry();
        QVERIFY(!qobject_cast<BufferDisplayWidget*>(flat->widget())->isThreeDimensional());

        // The camera reports the change; the window rebuilds the view in 3D at the same place.
        manager->controlNode(depth, true);
        QVERIFY(manager->setProperty<bool>(depth, "depthMap3Planes", true));
        QVERIFY(ViewerTest::waitFor([&] { return map->subWindow && map->subWindow != flat; }));
        auto* view = qobject_cast<BufferDisplayWidget*>(map->subWindow->widget());
        QVERIFY(view->isThreeDimensional());
        QCOMPARE(map->subWindow->geometry(), geometry);
        QVERIFY(!map->reopening);
        QVERIFY(manager->getProperty<bool>(depth, "enableDepthMap")); // the rebuild left the map on

        manager->setProperty<bool>(depth, "depthMap3Planes", false);
        QVERIFY(ViewerTest::waitFor([&] {
            auto* v = map->subWindow ? qobject_cast<BufferDisplayWidget*>(map->subWindow->widget()) : nullptr;
            return v && !v->isThreeDimensional();
        }));
        map->subWindow->close();
        QVERIFY(!manager->getProperty<bool>(depth, "enableDepthMap"));
        manager->controlNode(depth, false);
    }

    void aNodeThatLeavesWhileShownStaysUntilItsViewCloses()
    {
        BufferSubWindow* sub = area()->openView(buffer(BufferData::Depth));
        auto* view = qobject_cast<BufferDisplayWidget*>(sub->widget());
        const std::string serial = depth->device->device.getSerialNumber();
        Zerlane::Sim::Control::removeCamera(serial);
        // The camera's nodes leave first, then the camera itself: both are kept while the view is open.
        QVERIFY(ViewerTest::waitFor([&] { return depth->disconnected && depth->device->disconnected; }));
        QCOMPARE(model()->rowCount(), 1);
        QCOMPARE(view->interactiveInfo(), QString("Not streaming"));
        sub->close();
        QCOMPARE(model()->rowCount(), 0);
        QVERIFY(CameraManager::instance()->nodes().empty());
    }

private:
    BufferData* buffer(uint32_t type) const { return depth->buffer(type); }
    MdiArea* area() const { return window->findChild<MdiArea*>("mdiArea"); }
    DeviceTreeModel* model() const
    {
        return qobject_cast<DeviceTreeModel*>(window->findChild<DeviceTreeView*>("treeView")->model());
    }

    ZerlaneThread* events = nullptr;
    ZerlaneViewer* window = nullptr;
    NodeData* depth = nullptr;
};

QTEST_MAIN(TestSubWindows)
#include "tst_subwindows.moc"
