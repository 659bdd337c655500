// The program's connection table, with the real objects it connects.

#include "app/ViewerMain.h"
#include "app/Wiring.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "mainwindow/RecordingThread.h"
#include "mainwindow/ZerlaneViewer.h"
#include "support/ViewerTestSupport.h"
#include "worker/PostponedCalls.h"
#include "worker/WorkingThread.h"

#include <QtTest>

class TestWiring : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ViewerTest::isolateSettings();
        ViewerTest::useSteppedSimulator();
    }

    void everyConnectionIsMadeWithItsType()
    {
        const ViewerMain::Objects objects = ViewerMain::createObjects();
        RecordingThread* recorder = objects.recorder;
        ZerlaneViewer* window = objects.window;

        Wiring::registerMetaTypes();
        const QList<QMetaObject::Connection> connections =
            Wiring::connectAll(qApp, objects.events, objects.worker, recorder, window);
        QCOMPARE(connections.size(), Wiring::ConnectionCount);
        for (int i = 0; i < connections.size(); ++i)
            QVERIFY2(bool(connections[i]), qPrintable(QString("connection %1 failed").arg(i + 1)));

        // newRecordedFrame() counts the offered frame at once on this thread (direct), while the
        // recording work is queued to the recording thread, which is not running here: after 201
        // offered frames the lag is over the limit and the forced stop comes exactly once.
        ViewerTest::MessageBoxRecorder boxes;
        QSignalSpy forcedStops(recorder, &RecordingThread::forceStopRecording);
        recorder->onStartRecording("movie.qvf");
        for (int i = 0; i < 250; ++i)
            emit window->newRecordedFrame();
        QCOMPARE(forcedStops.size(), 1);
        QCOMPARE(forcedStops.first().first().toString(), QString("too much delay in frames recording"));
        // The window answers the forced stop with its warning, from its event loop: never inside the frame
        // being offered, which holds its buffer's lock.
        QCOMPARE(boxes.texts, QStringList());
        QVERIFY(ViewerTest::waitFor([&] { return !boxes.texts.isEmpty(); }));
        QCOMPARE(boxes.texts, QStringList{"Recording must be stopped: too much delay in frames recording"});

        ViewerMain::shutDown();
    }
};

QTEST_MAIN(TestWiring)
#include "tst_wiring.moc"
