#pragma once

#include "Zerlane/Zerlane.h"

#include <QMap>
#include <QMutex>
#include <QRecursiveMutex>
#include <QString>

#include <memory>
#include <vector>

template <class T>
class SingletonHolder;
class AudioNodeData;
class BufferData;
class ColorNodeData;
class DepthNodeData;
class DepthPalette;
class DeviceData;
class DeviceNodeBufferData;
class DeviceTreeModel;
class NodeData;
class WorkingThread;
class ZerlaneViewer;

// The process-wide owner of the camera service context, the device and node records, the displayed
// buffers, the streaming state, the current depth palette and the reference time. Shared by the GUI
// thread, the event thread and the worker; its recursive mutex guards its lists and state.
class CameraManager {
public:
    enum StreamingState { Stopped = 0, Streaming = 1, Frozen = 2 };

    // Created on first use; the constructor opens the context and may throw Zerlane::Exception.
    static CameraManager* instance();
    static void destroyInstance();
    // The instance if it exists, without creating it.
    static CameraManager* existingInstance();

    Zerlane::Context context() const;
    void setMainWindow(ZerlaneViewer* window);
    ZerlaneViewer* mainWindow() const;
    void setWorkingThread(WorkingThread* worker);
    WorkingThread* workingThread() const;
    void setTreeModel(DeviceTreeModel* model);
    DeviceTreeModel* treeModel() const;

    QRecursiveMutex& mutex() { return m_mutex; }
    void lockBuffers() { m_buffersMutex.lock(); }
    void unlockBuffers() { m_buffersMutex.unlock(); }

    int streamingState() const;
    void setStreamingState(int state);
    // Under the manager's mutex: the context's startNodes()/stopNodes(), then the new state.
    void startNodes();
    void stopNodes();

    const DepthPalette& palette() const;
    void setPalette(const DepthPalette& palette);

    void setReferenceTime(quint64 time);
    quint64 referenceTime() const;
    qint64 relativeTime(quint64 time) const;

    // Discovery: build records (GUI thread). addNode returns null for nodes that are not mirrored.
    DeviceData* addDevice(const Zerlane::Device& device);
    NodeData* addNode(const Zerlane::Device& device, const Zerlane::Node& node);
    DeviceData* findDevice(const Zerlane::Device& device) const;
    NodeData* findNode(const Zerlane::Node& node) const;
    // The buffer record at that address, if it is one of the mirrored nodes' buffers.
    BufferData* findBuffer(quintptr address) const;
    // Take a record out of the lists (and the tree) and drop the creation reference.
    void removeNode(NodeData* node);
    void removeDevice(DeviceData* device);
    // A record that is still shown or has a job running is not in use only when neither holds.
    static bool isInUse(const NodeData* node);
    static bool isInUse(const DeviceData* device);

    // The store the device tree model brackets with its begin/end calls.
    int deviceCount() const;
    DeviceData* deviceAt(int row) const;
    void appendDevice(DeviceData* device);
    void appendNodeToDevice(NodeData* node);
    void removeDeviceAt(int row);
    void removeNodeAt(DeviceData* device, int row);
    std::vector<DeviceData*> devices() const;
    std::vector<NodeData*> nodes() const;

    // Registration and control, with their user-facing failure messages.
    void registerNode(NodeData* node, bool doRegister);
    void registerDevice(DeviceData* device, bool doRegister);
    void controlDevice(DeviceData* device, bool request);
    void controlNode(NodeData* node, bool request);

    // Typed property access on a device or node record. Setters return true on success and warn
    // "Could not set property %1: %2" otherwise; getters log and return a zero value on failure.
    // Instantiated for bool, int32_t, float and Zerlane::ExposureAuto.
    template <class T>
    bool setProperty(DeviceNodeBufferData* record, const QString& name, T value);
    template <class T>
    T getProperty(DeviceNodeBufferData* record, const QString& name);
    // The camera reported a new configuration: remember it without applying it again.
    void storeReportedConfiguration(NodeData* node);

    // Configurations: apply (when asked) and remember the node's current configuration.
    void setDepthConfiguration(NodeData* node, const Zerlane::DepthNode::Configuration& configuration, bool apply);
    void setColorConfiguration(NodeData* node, const Zerlane::ColorNode::Configuration& configuration, bool apply);
    void setAudioConfiguration(NodeData* node, const Zerlane::AudioNode::Configuration& configuration, bool apply);

    // Buffers shown in views: their node's sample event is bound while at least one is shown.
    void addDisplayedBuffer(BufferData* buffer);
    void removeDisplayedBuffer(BufferData* buffer);
    std::vector<BufferData*> displayedBuffers() const;

    // Use counts of the node properties that views switch on ("enableDepthMap" ...).
    int incrementPropertyUse(const QString& name);
    int decrementPropertyUse(const QString& name);

private:
    friend class SingletonHolder<CameraManager>;
    CameraManager();
    ~CameraManager();

    static Zerlane::Context openContext();
    void refreshRow(DeviceNodeBufferData* record) const;
    void insertIntoTree(DeviceData* device);
    void insertIntoTree(NodeData* node);
    NodeData* buildNodeRecord(const Zerlane::Device& device, const Zerlane::Node& node, DeviceData* deviceRecord);
    void createBuffers(NodeData* node);
    // Requests or releases control of a device or node; false (after reporting why) when refused.
    template <class Handle>
    bool changeControl(const Handle& handle, bool& controlled, bool request);
    struct NodeConfigurations;
    template <class Kind, class Configuration>
    void setConfiguration(NodeData* node, const Configuration& configuration, bool apply,
                          Configuration NodeConfigurations::*current);

    mutable QRecursiveMutex m_mutex;
    QMutex m_buffersMutex;
    Zerlane::Context m_context;
    std::vector<DeviceData*> m_devices;
    std::vector<NodeData*> m_nodes;
    std::vector<BufferData*> m_buffers;  // displayed buffers
    QMap<QString, int> m_propertyUses;
    ZerlaneViewer* m_mainWindow = nullptr;
    DeviceTreeModel* m_treeModel = nullptr;
    std::unique_ptr<DepthPalette> m_currentPalette;
    WorkingThread* m_worker = nullptr;
    int m_streamingState = Stopped;
    quint64 m_referenceTime = 0;

    // Configuration lists and current configurations read at discovery, owned here and pointed to by
    // the node records.
    std::vector<std::unique_ptr<NodeConfigurations>> m_configurations;
    NodeConfigurations* configurationsOf(const NodeData* node) const;
};

