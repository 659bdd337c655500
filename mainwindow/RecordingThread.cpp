#include "mainwindow/RecordingThread.h"

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
    const unsigned int recorded = ++recordedFrameCount;
    emit updateRecordingInfo(isRecording, recorded, totalFrameCount);
}

void RecordingThread::onNewFrameIncTotalFrameCount()
{
    const unsigned int total = ++totalFrameCount;
    if (total - recordedFrameCount > MaximumLag && !forceStopSent.exchange(true))
        emit forceStopRecording("too much delay in frames recording");
}
