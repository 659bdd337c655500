#pragma once

#include "app/shared/Singleton.h"

#include <QString>
#include <QThread>

#include <atomic>

// Counts the frames of the buffers being recorded. No file is written: each recorded frame costs a
// fixed 50 ms of work, and a recording that falls more than 200 frames behind is stopped.
class RecordingThread : public QThread, public Singleton<RecordingThread> {
    Q_OBJECT

public:
    static constexpr unsigned int MaximumLag = 200;
    static constexpr int FrameCostMs = 50;

    ~RecordingThread() override;

    bool recording() const { return isRecording; }

signals:
    void updateRecordingInfo(bool isRecording, unsigned int recordedFrameCount, unsigned int totalFrameCount);
    void forceStopRecording(QString reason);

public slots:
    void onStartRecording(QString filename);
    void onStopRecording();
    void onNewFrame();
    void onNewFrameIncTotalFrameCount();

protected:
    void run() override;

private:
    friend class Singleton<RecordingThread>;
    RecordingThread();

    // Shared with the GUI thread, which counts the total and runs the lag test: atomic, without a lock
    // (the lag test tolerates a count that is one frame behind).
    std::atomic<unsigned int> recordedFrameCount{0};
    std::atomic<unsigned int> totalFrameCount{0};
    std::atomic<bool> isRecording{false};
    std::atomic<bool> forceStopSent{false};
};
