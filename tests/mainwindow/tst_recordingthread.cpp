// The recording thread's bookkeeping: its two counters, what it reports, and the forced stop once a
// recording falls more than 200 frames behind.
#include "mainwindow/RecordingThread.h"

#include <QtTest>

namespace {

QVariantList info(bool recording, uint recorded, uint total)
{
    return QVariantList{recording, recorded, total};
}

void offer(RecordingThread* recorder, int frames)
{
    for (int i = 0; i < frames; ++i)
        recorder->onNewFrameIncTotalFrameCount();
}

} // namespace

class TestRecordingThread : public QObject {
    Q_OBJECT

private slots:
    void cleanupTestCase() { RecordingThread::destroyInstance(); }

    void countsOfferedAndRecordedFramesAndStopsOncePerRecording()
    {
        // Slots called on this thread: the thread is not started, so nothing runs behind the test.
        RecordingThread* recorder = RecordingThread::instance();
        QSignalSpy infos(recorder, &RecordingThread::updateRecordingInfo);
        QSignalSpy forcedStops(recorder, &RecordingThread::forceStopRecording);

        recorder->onStartRecording("movie.qvf");
        QVERIFY(recorder->recording());
        QCOMPARE(infos.last(), info(true, 0, 0));
        offer(recorder, 3);
        QElapsedTimer clock;
        clock.start();
        recorder->onNewFrame();
        QVERIFY(clock.elapsed() >= RecordingThread::FrameCostMs - 1); // each recorded frame costs 50 ms
        QCOMPARE(infos.last(), info(true, 1, 3));
        recorder->onNewFrame();
        QCOMPARE(infos.last(), info(true, 2, 3));

        // With 2 recorded, the lag reaches 200 at 202 offered frames and passes it at 203.
        offer(recorder, 199);
        QCOMPARE(forcedStops.size(), 0);
        offer(recorder, 1);
        QCOMPARE(forcedStops.size(), 1);
        QCOMPARE(forcedStops.first().first().toString(), QString("too much delay in frames recording"));
        offer(recorder, 100);
        QCOMPARE(forcedStops.size(), 1);

        // A forced stop only signals; the stop ends the recording. Frames still queued then keep counting
        // and say that the recording is over.
        QVERIFY(recorder->recording());
        recorder->onStopRecording();
        QVERIFY(!recorder->recording());
        QCOMPARE(infos.last(), info(false, 0, 0));
        recorder->onNewFrame();
        QCOMPARE(infos.last(), info(false, 3, 303));

        // The next recording starts from nothing and may be stopped again.
        recorder->onStartRecording("again.qvf");
        QCOMPARE(infos.last(), info(true, 0, 0));
        offer(recorder, 200);
        QCOMPARE(forcedStops.size(), 1);
        offer(recorder, 1);
        QCOMPARE(forcedStops.size(), 2);
        recorder->onStopRecording();
    }
};

QTEST_APPLESS_MAIN(TestRecordingThread)
#include "tst_recordingthread.moc"
