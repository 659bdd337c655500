#include "mainwindow/RecordingThread.h"

#include "app/SingletonHolder.h"
#include <QMutex>
#include <QMutexLocker>

namespace {

SingletonHolder<RecordingThread> holder;

} // namespace

RecordingThread* RecordingThread::instance()
{
    return holder.instance([] { return new RecordingThread(); });
}

RecordingThread* RecordingThread::existingInstance()
{
    return holder.existing();
}

void RecordingThread::destroyInstance()
{
    holder.destroy();
}

RecordingThread::RecordingThread() = default;

RecordingThread::~RecordingThread()
{
    quit();
    wait();
}

void RecordingThread::run()
{
    exec();
}

void RecordingThread::onStartRecording(QString)
{
    recordedFrameCount = 0;
    totalFrameCount = 0;
    isRecording = true;
    forceStopSent = false;
    emit updateRecordingInfo(true, 0, 0);
}

void RecordingThread::onStopRecording()
{
    isRecording = false;
    forceStopSent = false;
    emit updateRecordingInfo(false, 0, 0);
}

void RecordingThread::onNewFrame()
{
    QThread::msleep(FrameCostMs);
    recordedFrameCount = recordedFrameCount + 1;
    emit updateRecordingInfo(isRecording, recordedFrameCount, totalFrameCount);
}

void RecordingThread::onNewFrameIncTotalFrameCount()
{
    totalFrameCount = totalFrameCount + 1;
    if (totalFrameCount - recordedFrameCount > MaximumLag && !forceStopSent) {
        emit forceStopRecording("too much delay in frames recording");
        forceStopSent = true;
    }
}
