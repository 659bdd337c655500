#pragma once

#include <QString>
#include <QThread>

// Counts the frames of the buffers being recorded. No file is written: each recorded frame costs a
// fixed 50 ms of work, and a recording that falls more than 200 frames behind is stopped.
class RecordingThread : public QThread {
    Q_OBJECT

public:
    static constexpr unsigned int MaximumLag = 200;
    static constexpr int FrameCostMs = 50;

    static RecordingThread* instance();
    static RecordingThread* existingInstance();
    static void destroyInstance();
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
    RecordingThread();

    // Shared with the GUI thread without a lock: the lag test tolerates a stale read.
    volatile unsigned int recordedFrameCount = 0;
    volatile unsigned int totalFrameCount = 0;
    volatile bool isRecording = false;
    bool forceStopSent = false;
};
