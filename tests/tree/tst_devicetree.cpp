// The device tree model over the camera manager's records, and the tree view over it: what a selection
// reports and what the context menu offers, with no window around them.

#include "../events/EventsFixture.h"

#include "camera/DeviceNodeBufferData.h"
#include "tree/DeviceTreeModel.h"
#include "tree/DeviceTreeView.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QDataStream>
#include <QMenu>
#include <QMimeData>
#include <QTimer>
#include <QtTest>

class TestDeviceTree : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { ViewerTest::isolateSettings(); }

    void init()
    {
        ViewerTest::useSteppedSimulator();
        model = new DeviceTreeModel(CameraManager::instance());
        tester = new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        // Rows are listed through the model, as the window lists them.
        fixture.listDevice = [this](DeviceData* record) {
            QVERIFY(model->insertItem(fixture.manager->deviceCount(), record, QModelIndex()));
        };
        fixture.listNode = [this](NodeData* record) {
            QVERIFY(model->insertItem(record->position, record, model->indexOf(record->device)));
        };
    }

    void cleanup()
    {
        delete tester;
        delete model;
        fixture.stop();
    }

    void emptyStore()
    {
        QCOMPARE(model->rowCount(), 0);
        QCOMPARE(model->columnCount(), 1);
        QCOMPARE(model->headerData(0, Qt::Horizontal).toString(), QString("Devices"));
        QVERIFY(!model->headerData(0, Qt::Vertical).isValid());
        QVERIFY(!model->index(0, 0).isValid());
    }

    void showsDevicesNodesAndBuffers()
    {
        fixture.buildRecords();
        QCOMPARE(model->rowCount(), 1);
        const QModelIndex device = model->index(0, 0);
        QCOMPARE(model->data(device).toString(),
                 QString("%1 (%2)").arg(QString::fromStdString(Zerlane::Device::Model_toString(fixture.device.getModel())),
                                        QString::fromStdString(fixture.device.getSerialNumber())));
        QCOMPARE(model->rowCount(device), 3);
        QStringList nodeTexts;
        for (int row = 0; row < 3; ++row)
            nodeTexts << model->data(model->index(row, 0, device)).toString();
        QCOMPARE(nodeTexts, (QStringList{"Depth Node", "Color Node", "Audio Node"}));

        const QModelIndex depth = model->index(0, 0, device);
        QCOMPARE(model->rowCount(depth), 8);
        QCOMPARE(model->data(model->index(7, 0, depth)).toString(), QString("Standard Deviation"));
        QCOMPARE(model->parent(model->index(3, 0, depth)), depth);
        QCOMPARE(model->parent(depth), device);
        QCOMPARE(model->rowCount(model->index(0, 0, depth)), 0);
        QCOMPARE(model->columnCount(model->index(0, 0, depth)), 1);
        QCOMPARE(model->rowCount(model->index(0, 0, depth).siblingAtColumn(0)), 0);

        // Only buffers can be dragged.
        QVERIFY(!(model->flags(device) & Qt::ItemIsDragEnabled));
        QVERIFY(!(model->flags(depth) & Qt::ItemIsDragEnabled));
        QVERIFY(model->flags(model->index(2, 0, depth)) & Qt::ItemIsDragEnabled);
        QCOMPARE(model->flags(QModelIndex()), Qt::NoItemFlags);
    }

    void rowFontsAndToolTipsFollowRegistrationAndControl()
    {
        fixture.buildRecords();
        NodeData* node = fixture.depth;
        const QModelIndex index = model->indexOf(node);
        auto font = [&] { return model->data(index, Qt::FontRole).value<QFont>(); };
        auto tip = [&](const QModelIndex& row) { return model->data(row, Qt::ToolTipRole).toString(); };
        QCOMPARE(font().weight(), QFont::Normal);
        QVERIFY(!font().italic());
        QCOMPARE(tip(index), QString("Not registered"));
        node->controlled = true;
        QCOMPARE(font().weight(), QFont::Normal); // controlled but not registered
        QVERIFY(!font().italic());
        QCOMPARE(tip(index), QString("Controlled"));
        node->registered = true;
        QCOMPARE(font().weight(), QFont::Bold);
        QVERIFY(!font().italic());
        QCOMPARE(tip(index), QString("Registered and controlled"));
        node->controlled = false;
        QCOMPARE(font().weight(), QFont::Bold);
        QVERIFY(font().italic()); // registered, not controlled
        QCOMPARE(tip(index), QString("Registered"));

        // A device row says the same of its device; buffer rows say nothing.
        const QModelIndex device = model->indexOf(fixture.deviceRecord);
        QCOMPARE(tip(device), QString("Not registered"));
        fixture.deviceRecord->registered = true;
        QCOMPARE(tip(device), QString("Registered"));
        BufferData* buffer = node->buffers[0];
        QCOMPARE(model->data(model->indexOf(buffer), Qt::FontRole).value<QFont>().weight(), QFont::Normal);
        QVERIFY(!model->data(model->indexOf(buffer), Qt::DecorationRole).isValid());
        QVERIFY(!model->data(model->indexOf(buffer), Qt::ToolTipRole).isValid());
    }

    void deviceTextFallsBackWhenTheCameraFails()
    {
        fixture.buildRecords();
        Zerlane::plugin::FaultInjector::inject("Device::getSerialNumber", Zerlane::plugin::FaultInjector::Kind::Exception,
                                               "unreadable");
        QCOMPARE(model->data(model->index(0, 0)).toString(), QString("?"));
        Zerlane::plugin::FaultInjector::clear();
    }

    void dragCarriesTheFirstBufferOnly()
    {
        fixture.buildRecords();
        const QModelIndex depth = model->indexOf(fixture.depth);
        const QModelIndexList dragged = {model->index(2, 0, depth), model->index(3, 0, depth)};
        std::unique_ptr<QMimeData> mime(model->mimeData(dragged));
        QVERIFY(mime);
        QCOMPARE(mime->formats(), QStringList{"application/x-qabstractitemmodeldatalist"});
        QByteArray bytes = mime->data("application/x-qabstractitemmodeldatalist");
        QDataStream stream(&bytes, QIODevice::ReadOnly);
        qint64 address = 0;
        stream >> address;
        QVERIFY(stream.atEnd());
        QCOMPARE(reinterpret_cast<BufferData*>(address), fixture.depth->buffers[2]);
        QVERIFY(!model->mimeData({}));
    }

    void rowsComeAndGoWithTheCameras()
    {
        fixture.buildRecords();
        DeviceData* device = fixture.deviceRecord;
        QVERIFY(!model->insertItem(0, device, model->indexOf(device))); // a device under a device
        QVERIFY(!model->removeItem(0, model->indexOf(fixture.depth))); // a node is no parent to remove from

        // A second camera, then the first leaves: the second moves up and its index follows.
        const std::string serial = Zerlane::Sim::Control::addCamera("ZS0777");
        Zerlane::Device second;
        for (const Zerlane::Device& d : fixture.manager->context().getDevices()) {
            if (d.getSerialNumber() == serial)
                second = d;
        }
        QVERIFY(second.isSet());
        DeviceData* secondRecord = fixture.addCamera(fixture.manager, second);
        QCOMPARE(model->rowCount(), 2);

        QVERIFY(model->removeItem(device->position, QModelIndex()));
        fixture.deviceRecord = nullptr;
        fixture.depth = fixture.color = fixture.audio = nullptr;
        QCOMPARE(model->rowCount(), 1);
        QCOMPARE(model->index(0, 0).internalPointer(), static_cast<void*>(secondRecord));
        QCOMPARE(model->parent(model->index(0, 0, model->index(0, 0))).row(), 0);

        QCOMPARE(fixture.manager->nodes().size(), size_t(3)); // the first camera's nodes went with it

        // A node leaves its device.
        QVERIFY(model->removeItem(1, model->index(0, 0)));
        QCOMPARE(model->rowCount(model->index(0, 0)), 2);
        QCOMPARE(model->data(model->index(1, 0, model->index(0, 0))).toString(), QString("Audio Node"));
        QCOMPARE(model->parent(model->index(0, 0, model->index(1, 0, model->index(0, 0)))).row(), 1);
    }

    void theViewReportsTheSelectedRecord()
    {
        fixture.buildRecords();
        DeviceTreeView view;
        view.setModel(model);
        QSignalSpy selections(&view, &DeviceTreeView::selectedRecordChanged);
        auto reported = [&] { return selections.takeLast().first().value<DeviceNodeBufferData*>(); };

        const QModelIndex depth = model->indexOf(fixture.depth);
        view.setCurrentIndex(depth);
        QCOMPARE(reported(), static_cast<DeviceNodeBufferData*>(fixture.depth));
        QCOMPARE(view.selectedRecord(), static_cast<DeviceNodeBufferData*>(fixture.depth));
        // A buffer is reported as itself: what it stands for is the receiver's business.
        view.setCurrentIndex(model->index(3, 0, depth));
        QCOMPARE(reported(), static_cast<DeviceNodeBufferData*>(fixture.depth->buffers[3]));
        view.setCurrentIndex(model->index(0, 0));
        QCOMPARE(reported(), static_cast<DeviceNodeBufferData*>(fixture.deviceRecord));
        view.clearSelection();
        QCOMPARE(reported(), static_cast<DeviceNodeBufferData*>(nullptr));
        QCOMPARE(view.selectedRecord(), static_cast<DeviceNodeBufferData*>(nullptr));
        QVERIFY(selections.isEmpty());
    }

    void theContextMenuOffersTheNodeActionsOnNodesOnly()
    {
        fixture.buildRecords();
        DeviceTreeView view;
        view.setModel(model);
        QPixmap picture(16, 16);
        picture.fill(Qt::darkCyan);
        QAction registerNode(QIcon(picture), "&Register node"), controlNode(QIcon(picture), "&Control node");
        registerNode.setCheckable(true);
        registerNode.setChecked(true);
        controlNode.setCheckable(true);
        view.setNodeActions({&registerNode, &controlNode});
        view.resize(300, 400);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));

        // Answers the menu that opens (if one does) with the texts of its actions, and keeps the
        // picture of each item's check column.
        QList<QImage> checkColumns;
        auto menuOn = [&](const QModelIndex& index) {
            view.setCurrentIndex(index);
            QStringList texts;
            checkColumns.clear();
            QTimer::singleShot(50, [&] {
                if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
                    for (QAction* action : menu->actions()) {
                        texts << action->text();
                        const QRect item = menu->actionGeometry(action);
                        checkColumns << menu->grab(QRect(item.topLeft(), QSize(item.height(), item.height()))).toImage();
                    }
                    menu->close();
                }
            });
            QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(10, 10), view.viewport()->mapToGlobal(QPoint(10, 10)));
            QCoreApplication::sendEvent(view.viewport(), &event);
            QTest::qWait(100);
            return texts;
        };
        const QModelIndex depth = model->indexOf(fixture.depth);
        QCOMPARE(menuOn(depth), (QStringList{"&Register node", "&Control node"}));

        // The checked item shows a check mark where the unchecked one shows an empty box, as a
        // checkable item without an icon does; the icons do not hide them.
        QCOMPARE(checkColumns.size(), 2);
        QMenu plain;
        plain.addAction("&Register node")->setCheckable(true);
        plain.actions()[0]->setChecked(true);
        plain.addAction("&Control node")->setCheckable(true);
        plain.ensurePolished();
        plain.adjustSize();
        for (int i = 0; i < 2; ++i) {
            const QRect item = plain.actionGeometry(plain.actions()[i]);
            const QImage expected = plain.grab(QRect(item.topLeft(), QSize(item.height(), item.height()))).toImage();
            QCOMPARE(checkColumns[i].convertToFormat(QImage::Format_RGB32), expected.convertToFormat(QImage::Format_RGB32));
        }
        QVERIFY(checkColumns[0] != checkColumns[1]);

        QCOMPARE(menuOn(model->index(0, 0)), QStringList());          // a device
        QCOMPARE(menuOn(model->index(2, 0, depth)), QStringList());   // a buffer
    }

private:
    EventsFixture fixture;
    DeviceTreeModel* model = nullptr;
    QAbstractItemModelTester* tester = nullptr;
};

QTEST_MAIN(TestDeviceTree)
#include "tst_devicetree.moc"
