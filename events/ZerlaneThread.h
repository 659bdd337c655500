#pragma once

#include "Zerlane/Zerlane.h"
#include "app/shared/Singleton.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"

#include <QMutex>
#include <QThread>

#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <string>

class CameraManager;

// The thread inside which the camera service runs its event loop. Its handlers turn service events
// into signals for the main window and copy samples into the node records' buffers.
class ZerlaneThread : public QThread, public Singleton<ZerlaneThread> {
    Q_OBJECT

public:
    ~ZerlaneThread() override;

    // True exactly while the service loop runs.
    bool isLoopRunning() const { return m_running; }
    // The next sample sets the reference time.
    void resetReferenceTime() { m_resetReferenceTime = true; }

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
    friend class Singleton<ZerlaneThread>;
    ZerlaneThread();

    // A node record held while one of its samples is copied: the GUI thread may drop the record meanwhile.
    struct ReleaseRecord {
        void operator()(NodeData* record) const { record->release(); }
    };
    using HeldNode = std::unique_ptr<NodeData, ReleaseRecord>;
    // How a sample moves its node's buffers to their next slot: a depth node's all together under the
    // buffers lock (a reader holding it sees the maps of one sample), the others one by one.
    enum class SlotFlip { Together, EachBuffer };

    void runServiceLoop();
    void finishRun();
    void bindDeviceEvents(Zerlane::Device device, bool withPropertyEvents);
    void bindNodeProperties(Zerlane::Node node);
    // Logs another client's arrival or departure and shows it in the status bar.
    void reportClient(const char* format, const Zerlane::Context::ClientData_p& client);
    // Common start of the sample handlers: the node's record, held, or null when the sample is not
    // taken (unknown node, not streaming). Counts the sample and sets the reference time on the first.
    HeldNode takeSample(const Zerlane::Node& node, quint64 timeOfCapture, quint64 timeOfArrival, quint64* eventTime);
    // Common end: flips the slots, stamps each buffer's write slot with the sample's times and dropped
    // counts, lets `fill` fill it, and announces the buffer unless `fill` says there is nothing new.
    // Logs the first refused frame of a node; the frames are refused, the node stays.
    void logRefusedFrame(const Zerlane::Node& node, const std::string& reason);
    template <class Sample, class Fill>
    void deliver(NodeData* record, const Sample& sample, quint64 eventTime, SlotFlip flip, Fill fill);

    CameraManager* m_manager = nullptr;
    QMutex m_mutex;
    std::atomic<bool> m_resetReferenceTime{true};
    bool m_quitOnExit = true;
    std::atomic<bool> m_running{false};
    Zerlane::Context m_context;
    // Held by run() for as long as the thread owns m_manager and m_context; the destructor takes it after
    // wait(). QThread::wait synchronises through Qt's own primitives, which a race checker cannot see;
    // this lock makes the hand-back of the thread's state explicit.
    std::mutex m_runLock;

    // One handler object per event kind, bound for the life of the thread.
    Zerlane::StructMethodHandler<ZerlaneThread> m_clientConnectedHandler;
    Zerlane::StructMethodHandler<ZerlaneThread> m_clientDisconnectedHandler;
    Zerlane::MethodHandler<Zerlane::Context, Zerlane::Context::DeviceAddedData, ZerlaneThread> m_deviceAddedHandler;
    Zerlane::MethodHandler<Zerlane::Context, Zerlane::Context::DeviceRemovedData, ZerlaneThread> m_deviceRemovedHandler;
    Zerlane::MethodHandler<Zerlane::Device, Zerlane::Device::NodeAddedData, ZerlaneThread> m_nodeAddedHandler;
    Zerlane::MethodHandler<Zerlane::Device, Zerlane::Device::NodeRemovedData, ZerlaneThread> m_nodeRemovedHandler;
    Zerlane::MethodHandler<Zerlane::Device, Zerlane::PropertyChangedData, ZerlaneThread> m_devicePropertyHandler;
    Zerlane::MethodHandler<Zerlane::Node, Zerlane::PropertyChangedData, ZerlaneThread> m_nodePropertyHandler;
    std::set<Zerlane::Node> m_refusedNodes; // event thread only: nodes whose refused frames were logged
    Zerlane::MethodHandler<Zerlane::DepthNode, Zerlane::DepthNode::NewSampleReceivedData, ZerlaneThread> m_depthSampleHandler;
    Zerlane::MethodHandler<Zerlane::ColorNode, Zerlane::ColorNode::NewSampleReceivedData, ZerlaneThread> m_colorSampleHandler;
    Zerlane::MethodHandler<Zerlane::AudioNode, Zerlane::AudioNode::NewSampleReceivedData, ZerlaneThread> m_audioSampleHandler;
};
