// The info panel in the running program with the simulated camera: the device and node pages, one
// editor per property by type, edits reaching the camera and refused ones read back, the
// configuration box with its pending changes, question and apply, the panel following the camera,
// and content swaps held back under a modal box.

#include "app/ViewerMain.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "info/AudioNodeInfoWidget.h"
#include "info/ColorNodeInfoWidget.h"
#include "info/DepthNodeInfoWidget.h"
#include "info/DeviceInfoWidget.h"
#include "info/InfoWidget.h"
#include "mainwindow/ZerlaneViewer.h"
#include "support/ViewerTestSupport.h"
#include "tree/DeviceTreeModel.h"
#include "tree/DeviceTreeView.h"
#include "widgets/ZRDoubleSpinBox.h"
#include "widgets/ZRMessageBox.h"
#include "widgets/ZRSpinBox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QtTest>

using Zerlane::plugin::FaultInjector;

namespace {

// The widget of the form row labelled `label`, or null.
QWidget* fieldOf(QWidget* page, const QString& label)
{
    auto* form = qobject_cast<QFormLayout*>(page->layout());
    for (int row = 0; form && row < form->rowCount(); ++row) {
        QLayoutItem* labelItem = form->itemAt(row, QFormLayout::LabelRole);
        auto* labelWidget = labelItem ? qobject_cast<QLabel*>(labelItem->widget()) : nullptr;
        if (labelWidget && labelWidget->text() == label)
            return form->itemAt(row, QFormLayout::FieldRole)->widget();
    }
    return nullptr;
}

QString textOf(QWidget* page, const QString& label)
{
    auto* value = qobject_cast<QLabel*>(fieldOf(page, label));
    return value ? value->text() : QString("<no row %1>").arg(label);
}

QColor textColorOf(QWidget* widget)
{
    return widget->palette().color(QPalette::WindowText);
}

// Answers the next question box with `answer`, remembering its title and text.
struct QuestionAnswerer : QObject {
    explicit QuestionAnswerer(QMessageBox::StandardButton answer)
    {
        connect(&timer, &QTimer::timeout, this, [this, answer] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                titles << box->windowTitle();
                texts << box->text();
                box->button(box->standardButtons() & answer ? answer : QMessageBox::Ok)->click();
            }
        });
        timer.start(10);
    }
    QTimer timer;
    QStringList titles;
    QStringList texts;
};

} // namespace

class TestInfoPanel : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ViewerTest::isolateSettings();
        ViewerTest::useSteppedSimulator();
        window = ViewerMain::startProgram(qApp);
        tree = window->findChild<DeviceTreeView*>("treeView");
        model = qobject_cast<DeviceTreeModel*>(tree->model());
        info = window->findChild<InfoWidget*>("widgetInfo");
        QVERIFY(ViewerTest::waitFor([this] { return model->rowCount() == 1 && model->rowCount(deviceIndex()) == 3; }));
    }

    void cleanupTestCase()
    {
        ViewerMain::shutDown();
    }

    void init()
    {
        FaultInjector::clear();
        ViewerTest::resetStartupOptions();
        StartupOptions::setStandalone(true);
    }

    void devicePageShowsFactsAndOneEditorPerWritableProperty()
    {
        tree->setCurrentIndex(deviceIndex());
        auto* page = qobject_cast<DeviceInfoWidget*>(info->content());
        QVERIFY(page);
        QCOMPARE(textOf(page, "Serial:"), QString::fromStdString(device()->device.getSerialNumber()));
        QCOMPARE(textOf(page, "USB backend version:"), QString("0x1f2"));
        QCOMPARE(textOf(page, "TOF controller version:"), QString("0x4a3"));
        QCOMPARE(textOf(page, "Overheating : "), QString("no"));
        QCOMPARE(textColorOf(fieldOf(page, "Overheating : ")), QColor(Qt::black));

        // Read-only "temperature" and "firmwareVersion" get no row; the string is not editable.
        QCOMPARE(editorNames(page), (QStringList{"deviceName", "ledEnabled", "fanSpeed", "fanTargetTemperature"}));
        auto* name = qobject_cast<QLabel*>(fieldOf(page, "deviceName"));
        QCOMPARE(name->text(), QString("Not supported"));
        QCOMPARE(textColorOf(name), QColor(0xff, 0, 0));
        QVERIFY(qobject_cast<QCheckBox*>(fieldOf(page, "ledEnabled"))->isChecked());
        auto* fan = qobject_cast<ZRSpinBox*>(fieldOf(page, "fanSpeed"));
        QCOMPARE(fan->value(), 2400);
        QCOMPARE(fan->minimum(), -65536);
        QCOMPARE(fan->maximum(), 65535);
        QVERIFY(!fan->keyboardTracking());
        auto* target = qobject_cast<ZRDoubleSpinBox*>(fieldOf(page, "fanTargetTemperature"));
        QCOMPARE(target->value(), 40.0);
        QCOMPARE(target->maximum(), 99.99);
        QCOMPARE(target->decimals(), 2);
        for (QWidget* editor : page->editors())
            QVERIFY2(!editor->isEnabled(), qPrintable(editor->objectName()));

        // Control of the device rebuilds the page with editable editors; a change reaches the camera.
        action("actionControlDevice")->trigger();
        page = qobject_cast<DeviceInfoWidget*>(info->content());
        QVERIFY(page->device()->controlled);
        fan = qobject_cast<ZRSpinBox*>(fieldOf(page, "fanSpeed"));
        QVERIFY(fan->isEnabled());
        fan->setValue(3000);
        QCOMPARE(Zerlane::Property<int32_t>::getValue(Zerlane::Interface(device()->device), "fanSpeed"), 3000);

        // The camera reports that it runs hot: the row turns to a red "yes".
        const std::string serial = device()->device.getSerialNumber();
        Zerlane::Sim::Control::setOverheating(serial, true);
        QVERIFY(ViewerTest::waitFor([&] { return textOf(page, "Overheating : ") == "yes"; }));
        QCOMPARE(textColorOf(fieldOf(page, "Overheating : ")), QColor(0xff, 0, 0));
        Zerlane::Sim::Control::setOverheating(serial, false);
        QVERIFY(ViewerTest::waitFor([&] { return textOf(page, "Overheating : ") == "no"; }));
        action("actionControlDevice")->trigger(); // released again
    }

    void thePaneFitsItsPageUntilTheUserSizesIt()
    {
        showDepthNode();
        QApplication::processEvents();
        QVERIFY(!info->horizontalScrollBar()->isVisible());
        QVERIFY(info->width() >= info->content()->sizeHint().width());

        // Dragged narrower by the user, it stays so for the next page.
        auto* splitter = window->findChild<QSplitter*>("splitter");
        QSplitterHandle* handle = splitter->handle(2);
        const QPoint grip = handle->rect().center();
        QTest::mousePress(handle, Qt::LeftButton, {}, grip);
        QTest::mouseMove(handle, grip + QPoint(120, 0));
        QTest::mouseRelease(handle, Qt::LeftButton, {}, grip + QPoint(120, 0));
        const int chosen = splitter->sizes()[2];
        tree->setCurrentIndex(deviceIndex());
        QApplication::processEvents();
        showDepthNode();
        QApplication::processEvents();
        QCOMPARE(splitter->sizes()[2], chosen);
    }

    void depthPageEditsReachTheCameraAndRefusedValuesAreReadBack()
    {
        DepthNodeInfoWidget* page = showDepthNode();
        QCOMPARE(textOf(page, "Node type :"), QString("Depth Node"));
        QVERIFY(QRegularExpression("^[0-9A-F]{4}$").match(textOf(page, "VID :")).hasMatch());
        QVERIFY(QRegularExpression("^[0-9A-F]{4}$").match(textOf(page, "PID :")).hasMatch());
        QCOMPARE(textOf(page, "Range : "), QString("7.5m"));
        QVERIFY(!fieldOf(page, "range"));
        QVERIFY(!fieldOf(page, "sensorTemperature"));
        QVERIFY(!fieldOf(page, "_noFan")); // hidden without --showhidden
        QCOMPARE(qobject_cast<QLabel*>(fieldOf(page, "firmwareTag"))->text(), QString("Not supported"));
        auto* exposure = qobject_cast<QComboBox*>(fieldOf(page, "exposureAuto"));
        QCOMPARE(exposure->count(), 2);
        QCOMPARE(exposure->currentText(), QString("Aperture Priority"));
        QVERIFY(!fieldOf(page, "illuminationLevel")->isEnabled());

        page = controlDepthNode(true);
        const Zerlane::Interface camera(page->node()->node);
        auto* level = qobject_cast<ZRSpinBox*>(fieldOf(page, "illuminationLevel"));
        QVERIFY(level->isEnabled());
        level->setValue(42);
        QCOMPARE(Zerlane::Property<int32_t>::getValue(camera, "illuminationLevel"), 42);
        exposure = qobject_cast<QComboBox*>(fieldOf(page, "exposureAuto"));
        exposure->setCurrentIndex(exposure->findData(int(Zerlane::EXPOSURE_AUTO_MANUAL)));
        QCOMPARE(Zerlane::Property<Zerlane::ExposureAuto>::getValue(camera, "exposureAuto"), Zerlane::EXPOSURE_AUTO_MANUAL);
        auto* threshold = qobject_cast<QCheckBox*>(fieldOf(page, "enableDepthMap"));
        threshold->setChecked(true);
        QVERIFY(Zerlane::Property<bool>::getValue(camera, "enableDepthMap"));
        threshold->setChecked(false);

        // Refused by the camera, once by an injected fault and once as out of its range (0..100):
        // the warning names the property, and the editor shows the camera's value again.
        ViewerTest::MessageBoxRecorder boxes;
        FaultInjector::inject("PropertyBase::setValue", FaultInjector::Kind::Exception, "sensor busy", 1);
        level->setValue(55);
        QCOMPARE(level->value(), 42);
        level->setValue(500);
        QCOMPARE(level->value(), 42);
        QCOMPARE(Zerlane::Property<int32_t>::getValue(camera, "illuminationLevel"), 42);
        QVERIFY(ViewerTest::waitFor([&] { return boxes.texts.size() == 2; }));
        QCOMPARE(boxes.texts[0], QString("Could not set property illuminationLevel: sensor busy"));
        QVERIFY(boxes.texts[1].startsWith("Could not set property illuminationLevel: "));
        controlDepthNode(false);
    }

    void buildFailuresKeepWhatWasBuiltAndAreLogged()
    {
        ViewerTest::LogRecorder log(true);
        FaultInjector::inject("Node::getVID", FaultInjector::Kind::Exception, "usb stalled", 1);
        FaultInjector::inject("DepthNode::getRange", FaultInjector::Kind::Exception, "no range", 1);
        DepthNodeInfoWidget* page = showDepthNode();
        QCOMPARE(textOf(page, "Media interface :"), QString("0"));
        QVERIFY(!fieldOf(page, "VID :") && !fieldOf(page, "Revision :") && !fieldOf(page, "Range : "));
        QVERIFY(fieldOf(page, "illuminationLevel")); // the editors still come
        QVERIFY(log.warnings().contains("Could not generate node info: usb stalled"));
        QVERIFY(log.warnings().contains("Could not generate depth node info: no range"));

        // One property that cannot be read loses its editor only.
        FaultInjector::inject("PropertyBase::getValue", FaultInjector::Kind::Exception, "read failed", 1);
        page = showDepthNode();
        QVERIFY(!fieldOf(page, "enablePhaseMap"));
        QVERIFY(fieldOf(page, "enableConfidenceMap"));
        QVERIFY(log.warnings().contains("Could not generate property widget: read failed"));

        FaultInjector::inject("Device::getTofControllerVersion", FaultInjector::Kind::Exception, "busy", 1);
        tree->setCurrentIndex(deviceIndex());
        QVERIFY(fieldOf(info->content(), "USB backend version:"));
        QVERIFY(!fieldOf(info->content(), "Overheating : "));
        QVERIFY(log.warnings().contains("Could not generate device info: busy"));
    }

    void configurationBoxesListOfferedValuesAndSummariseChanges()
    {
        DepthNodeInfoWidget* depth = showDepthNode();
        QCOMPARE(comboTexts(depth->configurationCombo(0)), (QStringList{"QVGA (320x240)", "VGA (640x480)"}));
        QCOMPARE(comboTexts(depth->configurationCombo(1)), (QStringList{"15 fps", "25 fps", "30 fps", "60 fps"}));
        QCOMPARE(depth->configurationCombo(2)->count(), 2);
        QCOMPARE(comboTexts(depth->configurationCombo(3)), (QStringList{"Enabled", "Disabled"}));
        QCOMPARE(depth->configurationCombo(1)->currentText(), QString("30 fps"));
        QVERIFY(fieldOf(depth, "Format :") && fieldOf(depth, "Mode :") && fieldOf(depth, "Saturation :"));
        QVERIFY(!depth->hasPendingChanges());

        // There and back again is no change.
        selectData(depth->configurationCombo(0), Zerlane::FRAME_FORMAT_QVGA);
        QVERIFY(depth->hasPendingChanges());
        selectData(depth->configurationCombo(0), Zerlane::FRAME_FORMAT_VGA);
        QVERIFY(!depth->hasPendingChanges());

        selectData(depth->configurationCombo(3), 1);
        QCOMPARE(depth->pendingChangesText(), QString(" - saturation changed from disabled to enabled.\n"));
        selectData(depth->configurationCombo(0), Zerlane::FRAME_FORMAT_QVGA);
        selectData(depth->configurationCombo(1), 60);
        selectData(depth->configurationCombo(2), Zerlane::CAMERA_MODE_CLOSE_RANGE);
        QCOMPARE(depth->pendingChangesText(),
                 QString(" - Frame format changed from VGA to QVGA.\n - Frame rate changed from 30fps to 60fps.\n"
                         " - mode changed from %1 to %2.\n - saturation changed from disabled to enabled.\n")
                     .arg(modeName(Zerlane::CAMERA_MODE_LONG_RANGE), modeName(Zerlane::CAMERA_MODE_CLOSE_RANGE)));
        depth->discardChanges();
        QVERIFY(!depth->hasPendingChanges());

        tree->setCurrentIndex(nodeIndex(1));
        auto* color = qobject_cast<ColorNodeInfoWidget*>(info->content());
        QVERIFY(color);
        QVERIFY(fieldOf(color, "Compression :") && fieldOf(color, "PL freq :"));
        const int frameRates = color->configurationCombo(2)->count();
        QVERIFY(frameRates > 1);
        const int otherRate = color->configurationCombo(2)->itemData(0).toInt() == 30 ? 1 : 0;
        color->configurationCombo(2)->setCurrentIndex(otherRate);
        QCOMPARE(color->pendingChangesText(), QString(" - Frame rate changed from 30fps to %1fps.\n")
                                                  .arg(color->configurationCombo(2)->currentData().toInt()));
        color->discardChanges();

        tree->setCurrentIndex(nodeIndex(2));
        auto* audio = qobject_cast<AudioNodeInfoWidget*>(info->content());
        QVERIFY(audio);
        QCOMPARE(comboTexts(audio->configurationCombo(0)), (QStringList{"16000Hz", "44100Hz"}));
        QCOMPARE(comboTexts(audio->configurationCombo(1)), QStringList{"16"}); // one value, one item
        selectData(audio->configurationCombo(2), 2);
        QCOMPARE(audio->pendingChangesText(), QString(" - Channels changed from 1fps to 2fps.\n"));
        audio->discardChanges();
    }

    void setConfigurationAppliesThroughTheWorkerAndTheBoxFollowsTheCamera()
    {
        DepthNodeInfoWidget* page = controlDepthNode(true);
        NodeData* node = page->node();
        Zerlane::DepthNode camera(node->node);
        selectData(page->configurationCombo(0), Zerlane::FRAME_FORMAT_QVGA);
        selectData(page->configurationCombo(1), 60);
        page->findChild<QPushButton*>()->click();
        QVERIFY(ViewerTest::waitFor([&] { return camera.getConfiguration().frameRate == 60; }));
        QCOMPARE(camera.getConfiguration().frameFormat, Zerlane::FRAME_FORMAT_QVGA);
        QVERIFY(ViewerTest::waitFor([&] { return node->activeCount() == 0; }));
        QVERIFY(!page->hasPendingChanges());

        // A configuration the node does not offer: the worker's message, and the combos show what the
        // camera runs again.
        ViewerTest::MessageBoxRecorder boxes;
        selectData(page->configurationCombo(0), Zerlane::FRAME_FORMAT_VGA);
        page->applyChanges();
        QVERIFY(ViewerTest::waitFor([&] { return !boxes.texts.isEmpty() && node->activeCount() == 0; }));
        QCOMPARE(boxes.texts, QStringList{"Could not set Depth Node configuration :   \n\nInvalid configuration"});
        QVERIFY(ViewerTest::waitFor([&] { return !page->hasPendingChanges(); }));
        QCOMPARE(page->configurationCombo(0)->currentData().toInt(), int(Zerlane::FRAME_FORMAT_QVGA));

        // Changed by someone else: the combos, and the range with the mode, follow the camera even over
        // unapplied edits.
        selectData(page->configurationCombo(1), 15);
        camera.setConfiguration({Zerlane::FRAME_FORMAT_QVGA, 25, Zerlane::CAMERA_MODE_CLOSE_RANGE, true});
        QVERIFY(ViewerTest::waitFor([&] { return page->configurationCombo(1)->currentData().toInt() == 25; }));
        QCOMPARE(page->configurationCombo(2)->currentData().toInt(), int(Zerlane::CAMERA_MODE_CLOSE_RANGE));
        QCOMPARE(page->configurationCombo(3)->currentText(), QString("Enabled"));
        QVERIFY(ViewerTest::waitFor([&] { return textOf(page, "Range : ") == "3m"; }));
        QVERIFY(!page->hasPendingChanges());

        // A property written by someone else shows in its editor.
        Zerlane::Property<int32_t>::setValue(Zerlane::Interface(node->node), "confidenceThreshold", 321);
        auto* threshold = qobject_cast<QSpinBox*>(fieldOf(page, "confidenceThreshold"));
        QVERIFY(ViewerTest::waitFor([&] { return threshold->value() == 321; }));
        // The colour node's changes leave the depth page alone.
        Zerlane::Property<bool>::setValue(Zerlane::Interface(nodeRecord(1)->node), "enableColorMap", false);
        QTest::qWait(50);
        QCOMPARE(threshold->value(), 321);

        camera.setConfiguration({Zerlane::FRAME_FORMAT_VGA, 30, Zerlane::CAMERA_MODE_LONG_RANGE, false});
        QVERIFY(ViewerTest::waitFor([&] { return textOf(page, "Range : ") == "7.5m"; }));
        controlDepthNode(false);
    }

    void leavingANodeWithChangesAsksFirst()
    {
        // No: the edits are discarded and the next page comes.
        DepthNodeInfoWidget* page = showDepthNode();
        selectData(page->configurationCombo(1), 15);
        {
            QuestionAnswerer answer(QMessageBox::No);
            tree->setCurrentIndex(nodeIndex(1));
            QCOMPARE(answer.titles, QStringList{"Node configuration changed"});
            QCOMPARE(answer.texts, QStringList{"The following changes were not applied : \n\n"
                                               " - Frame rate changed from 30fps to 15fps.\n\n"
                                               "Do you want to apply these changes ?"});
        }
        QVERIFY(qobject_cast<ColorNodeInfoWidget*>(info->content()));
        QVERIFY(ViewerTest::waitFor([&] { return info->widget() == info->content(); }));
        QCOMPARE(Zerlane::DepthNode(nodeRecord(0)->node).getConfiguration().frameRate, 30);

        // Yes: applied before the page is replaced (the node is controlled for it).
        page = controlDepthNode(true);
        selectData(page->configurationCombo(1), 25);
        {
            QuestionAnswerer answer(QMessageBox::Yes);
            tree->setCurrentIndex(nodeIndex(2));
            QCOMPARE(answer.titles.size(), 1);
        }
        QVERIFY(ViewerTest::waitFor([&] { return Zerlane::DepthNode(nodeRecord(0)->node).getConfiguration().frameRate == 25; }));
        QVERIFY(ViewerTest::waitFor([&] { return nodeRecord(0)->activeCount() == 0; }));

        // Start also offers the pending changes first.
        page = showDepthNode();
        selectData(page->configurationCombo(1), 30);
        {
            QuestionAnswerer answer(QMessageBox::Yes);
            action("actionStartNodes")->trigger();
            QCOMPARE(answer.titles, QStringList{"Node configuration changed"});
        }
        QVERIFY(ViewerTest::waitFor([&] { return Zerlane::DepthNode(nodeRecord(0)->node).getConfiguration().frameRate == 30; }));
        action("actionStopNodes")->trigger();
        QVERIFY(ViewerTest::waitFor([&] { return window->streamingStatusText() == "Stopped"; }));
        controlDepthNode(false);
    }

    void contentSwapWaitsForTheModalBoxToClose()
    {
        showDepthNode();
        QWidget* before = info->widget();
        QPointer<QWidget> during;
        QTimer::singleShot(0, this, [&] {
            tree->setCurrentIndex(deviceIndex());
            during = info->widget();
            QVERIFY(qobject_cast<DeviceInfoWidget*>(info->content())); // notifications reach it already
            // A second change under the same box: only the newest content is installed later.
            tree->setCurrentIndex(nodeIndex(2));
            QApplication::activeModalWidget()->close();
        });
        ZRMessageBox box(QMessageBox::Information, "Busy", "modal", QMessageBox::Ok);
        box.exec();
        QCOMPARE(during.data(), before);
        QVERIFY(ViewerTest::waitFor([&] { return info->widget() == info->content(); }));
        QVERIFY(qobject_cast<AudioNodeInfoWidget*>(info->widget()));
    }

    void hiddenFanSwitchAndUnsupportedNode()
    {
        StartupOptions::setShowHidden(true);
        DepthNodeInfoWidget* page = controlDepthNode(true);
        auto* noFan = qobject_cast<QCheckBox*>(fieldOf(page, "_noFan"));
        QVERIFY(noFan);
        QVERIFY(page->editors().contains(noFan));
        QCOMPARE(page->editors().last(), noFan);
        noFan->click(); // shown for diagnosis only
        QVERIFY(!Zerlane::Property<bool>::getValue(Zerlane::Interface(page->node()->node), "_noFan"));
        controlDepthNode(false);

        // The tree lists no unsupported node, but the panel still shows one given to it.
        const std::string serial = device()->device.getSerialNumber();
        ViewerTest::LogRecorder quiet(true);
        Zerlane::Sim::Control::addNode(serial, Zerlane::NodeKind::Unsupported);
        Zerlane::Node handle;
        for (const Zerlane::Node& node : device()->device.getNodes()) {
            if (node.is<Zerlane::UnsupportedNode>())
                handle = node;
        }
        auto* record = new NodeData(handle, device(), handle.getType().getProperties());
        info->showNode(record);
        record->release(); // the page holds its own reference
        auto* unsupported = qobject_cast<NodeInfoWidget*>(info->content());
        QCOMPARE(unsupported->metaObject(), &NodeInfoWidget::staticMetaObject);
        QCOMPARE(textOf(unsupported, "Node type :"), QString("Unsupported Node"));
        QCOMPARE(textOf(unsupported, "Reason : "), QString::fromStdString(Zerlane::UnsupportedNode::Reason_toString(
                                                       Zerlane::UnsupportedNode(handle).getReason())));
        QCOMPARE(textOf(unsupported, "Serial :"), QString::fromStdString(serial));
        QVERIFY(unsupported->editors().isEmpty());
        QVERIFY(!unsupported->findChild<QPushButton*>());
        Zerlane::Sim::Control::removeNode(serial, Zerlane::NodeKind::Unsupported);
        tree->setCurrentIndex(deviceIndex());
    }

    void aPageOutlivesItsUnpluggedCamera()
    {
        DepthNodeInfoWidget* page = showDepthNode();
        QPointer<DepthNodeInfoWidget> guard(page);
        NodeData* node = page->node();
        const std::string serial = device()->device.getSerialNumber();
        LogRecorderScope quiet;
        Zerlane::Sim::Control::removeCamera(serial);
        QVERIFY(ViewerTest::waitFor([&] { return model->rowCount() == 0; }));
        // The tree's selection went with the camera; whatever the panel shows, the record it shows is alive.
        if (guard)
            QCOMPARE(guard->node(), node);
        Zerlane::Sim::Control::addCamera(serial);
        QVERIFY(ViewerTest::waitFor([&] { return model->rowCount() == 1 && model->rowCount(deviceIndex()) == 3; }));
        showDepthNode();
    }

private:
    struct LogRecorderScope {
        ViewerTest::LogRecorder log{true};
    };

    QModelIndex deviceIndex() const { return model->index(0, 0); }
    QModelIndex nodeIndex(int row) const { return model->index(row, 0, deviceIndex()); }
    DeviceData* device() const { return static_cast<DeviceData*>(DeviceTreeModel::recordOf(deviceIndex())); }
    NodeData* nodeRecord(int row) const { return static_cast<NodeData*>(DeviceTreeModel::recordOf(nodeIndex(row))); }
    QAction* action(const char* name) const { return window->findChild<QAction*>(name); }

    DepthNodeInfoWidget* showDepthNode()
    {
        tree->clearSelection();
        tree->setCurrentIndex(nodeIndex(0));
        return qobject_cast<DepthNodeInfoWidget*>(info->content());
    }

    DepthNodeInfoWidget* controlDepthNode(bool control)
    {
        showDepthNode();
        if (nodeRecord(0)->controlled != control)
            action("actionControlNode")->trigger();
        return qobject_cast<DepthNodeInfoWidget*>(info->content());
    }

    static QStringList editorNames(PropertyPanel* page)
    {
        QStringList names;
        for (QWidget* editor : page->editors())
            names << editor->objectName();
        return names;
    }

    static QStringList comboTexts(QComboBox* combo)
    {
        QStringList texts;
        for (int i = 0; i < combo->count(); ++i)
            texts << combo->itemText(i);
        return texts;
    }

    static void selectData(QComboBox* combo, int value)
    {
        const int index = combo->findData(value);
        QVERIFY2(index >= 0, qPrintable(QString("no item %1").arg(value)));
        combo->setCurrentIndex(index);
    }

    static QString modeName(Zerlane::CameraMode mode)
    {
        return QString::fromStdString(Zerlane::DepthNode::CameraMode_toString(mode));
    }

    ZerlaneViewer* window = nullptr;
    DeviceTreeView* tree = nullptr;
    DeviceTreeModel* model = nullptr;
    InfoWidget* info = nullptr;
};

QTEST_MAIN(TestInfoPanel)
#include "tst_infopanel.moc"
