#include "mainwindow/RecordingThread.h"

#include <QMutex>
#include <QMutexLocker>

namespace {

QMutex instanceMutex;
RecordingThread* theInstance = nullptr;

} // namespace

RecordingThread* RecordingThread::instance()
{
    QMutexLocker lock(&instanceMutex);
    if (!theInstance)
        theInstance = new RecordingThread();
    return theInstance;
}

RecordingThread* RecordingThread::existingInstance()
{
    QMutexLocker lock(&instanceMutex);
    return theInstance;
}

void RecordingThread::destroyInstance()
{
    QMutexLocker lock(&instanceMutex);
    delete theInstance;
    theInstance = nullptr;
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
