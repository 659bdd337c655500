// The main window's palette and recording actions, through the dialogs they open, with the program
// running over the stepped simulated camera and a depth view streaming.

#include "app/ViewerMain.h"
#include "camera/BufferData.h"
#include "camera/DepthNodeData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "mainwindow/ZerlaneViewer.h"
#include "palettes/DepthColorizer.h"
#include "palettes/DepthPalette.h"
#include "palettes/DepthPaletteSelectionDialog.h"
#include "support/ChildWithText.h"
#include "support/ViewerTestSupport.h"
#include "support/WhenModal.h"
#include "views/BufferSubWindow.h"
#include "views/MdiArea.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

#include <memory>
#include <vector>

namespace {

QPushButton* okOf(QWidget* dialog)
{
    return dialog->findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Ok);
}

} // namespace

class TestMainWindowDialogs : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QDir::setCurrent(m_dir.path()));
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        ViewerTest::isolateSettings();
        ViewerTest::useSteppedSimulator();
        window = ViewerMain::startProgram(qApp);
        // The program never shows the Record action (and a hidden action is never enabled); the test shows
        // it to drive recording as a user would.
        action("actionRecordQvf")->setVisible(true);
        manager = CameraManager::instance();
        QVERIFY(ViewerTest::waitFor([this] { return manager->nodes().size() == 3; }));
        for (NodeData* node : manager->nodes()) {
            if (node->node.is<Zerlane::DepthNode>())
                depth = node;
        }
        QVERIFY(depth);
        map = depth->buffer(BufferData::Depth);
        // Queued behind the window's own connection: counted once the window has had the frame.
        connect(ZerlaneThread::instance(), &ZerlaneThread::newFrame, &frameCounter,
                [this](BufferData* buffer) { depthFrames += buffer == map; }, Qt::QueuedConnection);
        manager->registerNode(depth, true);
        // Quarter-size frames keep the camera well ahead of the 20 frames a second a recording handles.
        manager->controlNode(depth, true);
        manager->setDepthConfiguration(depth, {Zerlane::FRAME_FORMAT_QVGA, 30, Zerlane::CAMERA_MODE_LONG_RANGE, false},
                                       true);
        // Minimised: frames still reach the view, but the software renderer does not paint each one.
        area()->openView(map)->showMinimized();
        action("actionStartNodes")->trigger();
        QVERIFY(ViewerTest::waitFor([this] { return window->streamingStatusText() == "Streaming"; }));
        nextFrames(2);
    }

    void cleanupTestCase()
    {
        area()->closeAllSubWindows();
        ViewerMain::shutDown();
    }

    void choosingAPaletteRecoloursTheDepthViewFromTheNextFrame()
    {
        QFile local("mine.xml");
        QVERIFY(local.open(QIODevice::WriteOnly));
        local.write("<palette name=\"Mine\" range=\"65535\"><aplat ai=\"0\" bi=\"65535\" c=\"00ff00\"/></palette>");
        local.close();

        QStringList listed;
        ViewerTest::whenModal([&](QWidget* dialog) {
            for (QRadioButton* button : dialog->findChildren<QRadioButton*>())
                listed << button->text() + (button->isChecked() ? "*" : "");
            ViewerTest::childWithText<QRadioButton>(dialog, "Normal range")->click();
            ViewerTest::childWithText<QPushButton>(dialog, "Ok")->click();
        });
        action("actionDepthPalette")->trigger();
        QCOMPARE(listed, (QStringList{"Grey scale", "Inverted grey scale", "Close range*", "Normal range", "Mine"}));
        std::unique_ptr<DepthPalette> normal(DepthPalette::fromXmlFile(":/palettes/palette.xml"));
        QVERIFY(*manager->palette() == *normal);

        // The next frame is coloured through "Normal range", pixel for pixel.
        nextFrames(2);
        QMutexLocker lock(&map->dataMutex);
        const int slot = map->readSlot();
        const int pixels = int(map->width[slot] * map->height[slot]);
        QVERIFY(pixels > 0);
        std::vector<uint32_t> expected(size_t(pixels), 0);
        DepthColorizer::colorizeDepth(reinterpret_cast<const int16_t*>(map->data[slot]), expected.data(), pixels,
                                      *normal, static_cast<DepthNodeData*>(depth)->range());
        const auto* shown = reinterpret_cast<const uint32_t*>(map->image[slot].pixels);
        QVERIFY(std::equal(expected.begin(), expected.end(), shown));
        QFile::remove("mine.xml");
    }

    void theRecordingDialogOffersTheShownBuffers()
    {
        BufferData* phase = depth->buffer(BufferData::Phase);
        BufferData* confidence = depth->buffer(BufferData::Confidence);
        area()->openView(phase);
        confidence->recorded = true; // not shown: no box, and a cancelled dialog leaves its mark
        QSignalSpy starts(window, &ZerlaneViewer::startRecording);

        const QString device = QString("%1 (%2)").arg(
            QString::fromStdString(Zerlane::Device::Model_toString(depth->device->device.getModel())),
            QString::fromStdString(depth->device->device.getSerialNumber()));
        ViewerTest::whenModal([&](QWidget* dialog) {
            QCOMPARE(dialog->windowTitle(), QString("QVF recording options"));
            const QString name = dialog->findChild<QLineEdit*>("filenameEdit")->text();
            QVERIFY2(QRegularExpression("^" + QRegularExpression::escape(QDir::currentPath())
                                        + "/movie-\\d{8}-\\d{6}\\.qvf$").match(name).hasMatch(),
                     qPrintable(name));
            const QList<QCheckBox*> boxes = dialog->findChildren<QCheckBox*>();
            QCOMPARE(boxes.size(), 2);
            QCOMPARE(boxes[0]->text(), QString("Phase (Depth Node, %1)").arg(device));
            QCOMPARE(boxes[1]->text(), QString("Depth (Depth Node, %1)").arg(device));

            // OK while at least one box is checked.
            QPushButton* ok = okOf(dialog);
            QVERIFY(!ok->isEnabled());
            boxes[0]->click();
            QVERIFY(ok->isEnabled());
            boxes[1]->click();
            boxes[0]->click();
            QVERIFY(ok->isEnabled());
            boxes[1]->click();
            QVERIFY(!ok->isEnabled());

            // The file button asks where to, starting from the proposed name.
            ViewerTest::whenModal([&](QWidget* modal) {
                auto* files = qobject_cast<QFileDialog*>(modal);
                QVERIFY(files);
                QCOMPARE(files->windowTitle(), QString("Video filename"));
                QCOMPARE(files->nameFilters(), QStringList{"Hallmere Video (*.qvf)"});
                files->selectFile(QDir::current().filePath("take.qvf"));
                static_cast<QDialog*>(files)->accept(); // as its Save button does
            }, dialog);
            dialog->findChild<QPushButton*>("filenameButton")->click();
            QCOMPARE(dialog->findChild<QLineEdit*>("filenameEdit")->text(), QDir::current().filePath("take.qvf"));
            boxes[1]->click();
            dialog->findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Cancel)->click();
        });
        action("actionRecordQvf")->trigger();
        QCOMPARE(starts.size(), 0);
        QVERIFY(confidence->recorded);
        QVERIFY(!map->recorded);
        QVERIFY(action("actionRecordQvf")->isEnabled());
        phase->subWindow->close();
    }

    void recordingCountsFramesUntilTheLagForcesAStop()
    {
        ViewerTest::MessageBoxRecorder boxes;
        QSignalSpy starts(window, &ZerlaneViewer::startRecording);
        startRecordingOf({"Depth"});
        QCOMPARE(starts.size(), 1);
        QVERIFY(starts.first().first().toString().endsWith(".qvf"));
        // Exactly the checked buffers are marked.
        QVERIFY(map->recorded);
        QVERIFY(!depth->buffer(BufferData::Confidence)->recorded);
        QVERIFY(ViewerTest::waitFor([this] { return label() == "Recording 0/0" && action("actionRecordQvf")->isEnabled(); }));

        // Frames come faster than the 20 a second the recording handles: once more than 200 wait, the
        // recording is stopped, once.
        QStringList seen;
        for (int frame = 0; frame < 2000 && boxes.texts.isEmpty(); ++frame) {
            stepFrames(1, 1);
            if (seen.isEmpty() || seen.last() != label())
                seen << label();
        }
        QCOMPARE(boxes.texts, QStringList{"Recording must be stopped: too much delay in frames recording"});
        const QRegularExpression counts("^Recording (\\d+)/(\\d+)$");
        uint lastTotal = 0;
        for (const QString& text : seen) {
            const QRegularExpressionMatch match = counts.match(text);
            QVERIFY2(match.hasMatch(), qPrintable(text));
            QVERIFY(match.captured(1).toUInt() <= match.captured(2).toUInt());
            QVERIFY(match.captured(2).toUInt() >= lastTotal);
            lastTotal = match.captured(2).toUInt();
        }
        QVERIFY(seen.size() > 10);
        QVERIFY(!action("actionRecordQvf")->isEnabled());

        // The frames still queued are worked off; then the action comes back.
        nextFrames(5);
        QVERIFY(ViewerTest::waitFor([this] { return action("actionRecordQvf")->isEnabled(); }, 30000));
        QCOMPARE(label(), QString(" Not recording"));
        QVERIFY(!window->findChild<QLabel*>("recordingLabel")->isEnabled());
        QCOMPARE(boxes.texts.size(), 1);
    }

    void aRecordedViewClosedMeanwhileStopsCounting()
    {
        BufferData* phase = depth->buffer(BufferData::Phase);
        area()->openView(phase);
        nextFrames(3);
        startRecordingOf({"Phase", "Depth"});
        QVERIFY(ViewerTest::waitFor([this] { return label() == "Recording 0/0" && action("actionRecordQvf")->isEnabled(); }));

        // Two buffers a frame, then one: every offered frame is recorded in the end.
        nextFrames(4);
        phase->subWindow->close();
        nextFrames(4);
        QVERIFY(ViewerTest::waitFor([this] { return label() == "Recording 12/12"; }));

        action("actionRecordQvf")->trigger(); // stops
        QVERIFY(!action("actionRecordQvf")->isEnabled());
        QVERIFY(ViewerTest::waitFor([this] { return label() == " Not recording" && action("actionRecordQvf")->isEnabled(); }));
    }

private:
    QAction* action(const char* name) const { return window->findChild<QAction*>(name); }
    MdiArea* area() const { return window->findChild<MdiArea*>("mdiArea"); }
    QString label() const { return window->findChild<QLabel*>("recordingLabel")->text(); }

    // Steps the camera `count` times, each time once the window has had all but `ahead` of the frames
    // stepped before. With at most one ahead, no more than two frames wait undelivered, so none is dropped.
    void stepFrames(int count, int ahead)
    {
        for (int i = 0; i < count; ++i) {
            QVERIFY(ViewerTest::waitFor([&] { return depthFrames >= steps - ahead; }));
            Zerlane::Sim::Control::step(1);
            ++steps;
        }
    }

    // Steps the camera and waits until the window has had every new depth frame. A view shows the frame
    // before the newest: the newest becomes readable when the next one starts.
    void nextFrames(int count)
    {
        stepFrames(count, 0);
        QVERIFY(ViewerTest::waitFor([&] { return depthFrames >= steps; }));
    }

    // Runs the recording dialog through the action, checks the named buffers' boxes and presses OK.
    void startRecordingOf(const QStringList& buffers)
    {
        ViewerTest::whenModal([&](QWidget* dialog) {
            for (QCheckBox* box : dialog->findChildren<QCheckBox*>()) {
                if (buffers.contains(box->text().section(' ', 0, 0)))
                    box->click();
            }
            okOf(dialog)->click();
        });
        action("actionRecordQvf")->trigger();
        QVERIFY(!action("actionRecordQvf")->isEnabled());
    }

    QTemporaryDir m_dir;
    ZerlaneViewer* window = nullptr;
    CameraManager* manager = nullptr;
    NodeData* depth = nullptr;
    BufferData* map = nullptr;
    QObject frameCounter;
    int depthFrames = 0; // given to the window
    int steps = 0;
};

QTEST_MAIN(TestMainWindowDialogs)
#include "tst_mainwindowdialogs.moc"
