#pragma once

#include "Zerlane/Zerlane.h"
#include "app/shared/Singleton.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"

#include <QPoint>
#include <QSize>
#include <QString>
#include <QThread>

class CameraManager;

// Carries out the requests that may block in the camera service (configurations, start, stop) on its
// own thread, so that the window stays responsive. The object is moved to itself: its slots run on
// this thread, one at a time, in the order they were posted.
class WorkingThread : public QThread, public Singleton<WorkingThread> {
    Q_OBJECT

public:
    ~WorkingThread() override;

signals:
    void popup(int level, QString msg);
    void addBuffer(BufferData* bufferData, QPoint pos, QSize size, bool maximized, float x, float y, float z,
                   float distance, float pan, float tilt);
    void registerNode(NodeData* nodeData);
    void controlNode(NodeData* nodeData);
    void jobDone(NodeData* nodeData);
    void streamingStarted(bool hasStarted);
    void streamingStopped(bool hasStopped);

public slots:
    void onSetDepthConfig(NodeData* nodeData, Zerlane::DepthNode::Configuration config);
    void onSetColorConfig(NodeData* nodeData, Zerlane::ColorNode::Configuration config);
    void onSetAudioConfig(NodeData* nodeData, Zerlane::AudioNode::Configuration config);
    void onStartStreaming();
    void onStopStreaming();
    void onDeviceAdded(DeviceData* deviceData);
    void onNodeAdded(NodeData* nodeData);

protected:
    void run() override;

private:
    friend class Singleton<WorkingThread>;
    WorkingThread();

    // Applies a configuration through the manager; `nodeName` is "Depth", "Color" or "Audio".
    template <class Apply>
    void applyConfiguration(NodeData* nodeData, const char* nodeName, Apply apply);

    // The automatic restore of a node from the saved workspace; it ends early when the node cannot
    // be matched to a saved one by its type name and its device's serial number.
    void restoreNode(NodeData* node);
    void reopenViews(NodeData* node, int saved);
    // Takes control of the node for the restore unless its device is controlled already; true when taken.
    bool takeControlFor(NodeData* node);
    void releaseControlOf(NodeData* node);
    void restoreConfiguration(NodeData* node, int saved);
    void restoreProperties(NodeData* node, int saved);

    CameraManager* m_manager = nullptr;
};
