#pragma once

#include "Zerlane/Zerlane.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"

#include <QMutex>
#include <QThread>

#include <atomic>
#include <memory>

class CameraManager;
class DeviceTreeView;

// The thread inside which the camera service runs its event loop. Its handlers turn service events
// into signals for the main window and copy samples into the node records' buffers.
class ZerlaneThread : public QThread {
    Q_OBJECT

public:
    static ZerlaneThread* instance();
    static ZerlaneThread* existingInstance();
    static void destroyInstance();
    ~ZerlaneThread() override;

    // True exactly while the service loop runs.
    bool isLoopRunning() const { return m_running; }
    // The next sample sets the reference time.
    void resetReferenceTime() { m_resetReferenceTime = true; }

    NodeData* currentNode() const { return m_currentNode; }
    void setCurrentNode(NodeData* node) { m_currentNode = node; }
    DeviceTreeView* treeView() const { return m_treeView; }
    void setTreeView(DeviceTreeView* view) { m_treeView = view; }

    // A node delivers its samples to the program only while one of its buffers is shown.
    void bindSamples(NodeData* node);
    void unbindSamples(NodeData* node);

    // Service event handlers; they run on this thread, inside the service loop.
    void onClientConnected(Zerlane::Context context, Zerlane::Context::ClientData_p data);
    void onClientDisconnected(Zerlane::Context context, Zerlane::Context::ClientData_p data);
    void onDeviceAdded(Zerlane::Context context, Zerlane::Context::DeviceAddedData data);
    void onDeviceRemoved(Zerlane::Context context, Zerlane::Context::DeviceRemovedData data);
    void onNodeAdded(Zerlane::Device device, Zerlane::Device::NodeAddedData data);
    void onNodeRemoved(Zerlane::Device device, Zerlane::Device::NodeRemovedData data);
    void onDevicePropertyChanged(Zerlane::Device device, Zerlane::PropertyChangedData data);
    void onNodePropertyChanged(Zerlane::Node node, Zerlane::PropertyChangedData data);
    void onDepthSample(Zerlane::DepthNode node, Zerlane::DepthNode::NewSampleReceivedData sample);
    void onColorSample(Zerlane::ColorNode node, Zerlane::ColorNode::NewSampleReceivedData sample);
    void onAudioSample(Zerlane::AudioNode node, Zerlane::AudioNode::NewSampleReceivedData sample);

signals:
    void deviceConnected(Zerlane::Device device);
    void deviceDisconnected(Zerlane::Device device);
    void nodeConnected(Zerlane::Device device, Zerlane::Node node);
    void nodeDisconnected(Zerlane::Node node);
    void newFrame(BufferData* bufferData);
    void propertyChanged(Zerlane::Device device, Zerlane::PropertyBase prop);
    void propertyChanged(Zerlane::Node node, Zerlane::PropertyBase prop);
    void setStatusMessage(QString message, int timeout);
    void popup(int level, QString message);
    void quitQApplication();

public slots:
    void on_aboutToQuitApplication();

protected:
    void run() override;

private:
    ZerlaneThread();

    void runServiceLoop();
    void finishRun();
    void bindDeviceEvents(Zerlane::Device device, bool withPropertyEvents);
    void bindNodeProperties(Zerlane::Node node);
    // Logs another client's arrival or departure and shows it in the status bar.
    void reportClient(const char* format, const Zerlane::Context::ClientData_p& client);
    // Common start of the sample handlers: the node's record with a reference taken, or null when the
    // sample is not taken (unknown node, not streaming).
    NodeData* takeSample(const Zerlane::Node& node, quint64 timeOfCapture, quint64 timeOfArrival, quint64* eventTime);

    CameraManager* m_manager = nullptr;
    QMutex m_mutex;
    std::atomic<bool> m_resetReferenceTime{true};
    bool m_quitOnExit = true;
    std::atomic<bool> m_running{false};
    NodeData* m_currentNode = nullptr;
    DeviceTreeView* m_treeView = nullptr;
    Zerlane::Context m_context;

    // One handler object per event kind, bound for the life of the thread.
    Zerlane::StructMethodHandler<ZerlaneThread> m_clientConnectedHandler;
    Zerlane::StructMethodHandler<ZerlaneThread> m_clientDisconnectedHandler;
    Zerlane::MethodHandler<Zerlane::Context, Zerlane::Context::DeviceAddedData, ZerlaneThread> m_deviceAddedHandler;
    Zerlane::MethodHandler<Zerlane::Context, Zerlane::Context::DeviceRemovedData, ZerlaneThread> m_deviceRemovedHandler;
    Zerlane::MethodHandler<Zerlane::Device, Zerlane::Device::NodeAddedData, ZerlaneThread> m_nodeAddedHandler;
    Zerlane::MethodHandler<Zerlane::Device, Zerlane::Device::NodeRemovedData, ZerlaneThread> m_nodeRemovedHandler;
    Zerlane::MethodHandler<Zerlane::Device, Zerlane::PropertyChangedData, ZerlaneThread> m_devicePropertyHandler;
    Zerlane::MethodHandler<Zerlane::Node, Zerlane::PropertyChangedData, ZerlaneThread> m_nodePropertyHandler;
    Zerlane::MethodHandler<Zerlane::DepthNode, Zerlane::DepthNode::NewSampleReceivedData, ZerlaneThread> m_depthSampleHandler;
    Zerlane::MethodHandler<Zerlane::ColorNode, Zerlane::ColorNode::NewSampleReceivedData, ZerlaneThread> m_colorSampleHandler;
    Zerlane::MethodHandler<Zerlane::AudioNode, Zerlane::AudioNode::NewSampleReceivedData, ZerlaneThread> m_audioSampleHandler;
};
