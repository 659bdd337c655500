#pragma once

#include "Zerlane/Zerlane.h"
#include "app/shared/Singleton.h"
#include "events/DisplayPreferences.h"

#include <QMap>
#include <QMutex>
#include <QString>

#include <memory>
#include <mutex>
#include <vector>

class BufferData;
class CameraManagerListener;
class DepthPalette;
class DeviceData;
class DeviceNodeBufferData;
class NodeData;

// The process-wide owner of the camera service context, the device and node records, the displayed
// buffers, the streaming state, the current depth palette, the display preferences and the reference
// time. Shared by the GUI thread, the event thread and the worker.
//
// Locks: the recursive mutex guards the lists, the streaming state and the reference time (a standard
// one: ThreadSanitizer sees its locking, while a Qt recursive mutex locks inside the Qt library, out
// of its sight); the buffers lock makes a depth node's buffers change slots as one step; the palette
// and the preferences are swapped whole under their own small lock, so that a reader takes a
// consistent copy and never holds a lock while it uses it.
//
// It reports what it changes to one listener (the main window), and builds records without showing
// them: the tree lists them through appendDevice / appendNodeToDevice.
class CameraManager : public Singleton<CameraManager> {
public:
    enum StreamingState { Stopped = 0, Streaming = 1, Frozen = 2 };

    ~CameraManager();

    Zerlane::Context context() const;
    // The listener told about registration, control, property and configuration changes, and asked to
    // show warnings; without one, warnings go to the log.
    void setMainWindow(CameraManagerListener* window);

    std::recursive_mutex& mutex() { return m_mutex; }
    void lockBuffers() { m_buffersMutex.lock(); }
    void unlockBuffers() { m_buffersMutex.unlock(); }

    int streamingState() const;
    void setStreamingState(int state);
    // Under the manager's mutex: the context's startNodes()/stopNodes(), then the new state.
    void startNodes();
    void stopNodes();

    // The palette that colours the frames from now on. A frame being coloured keeps the table it
    // started with, so a change never tears one.
    std::shared_ptr<const DepthPalette> palette() const;
    void setPalette(const DepthPalette& palette);

    DisplayPreferences displayPreferences() const;
    void setDisplayPreferences(const DisplayPreferences& preferences);

    void setReferenceTime(quint64 time);
    quint64 referenceTime() const;
    qint64 relativeTime(quint64 time) const;

    // Discovery (GUI thread). addDevice builds a device record; it is listed by appendDevice. addNode
    // builds a node record with its buffers under a listed device and keeps it in the node list (where
    // the sample handlers find it); it is shown under its device by appendNodeToDevice. addNode returns
    // null for nodes that are not mirrored.
    DeviceData* addDevice(const Zerlane::Device& device);
    NodeData* addNode(const Zerlane::Device& device, const Zerlane::Node& node);
    DeviceData* findDevice(const Zerlane::Device& device) const;
    NodeData* findNode(const Zerlane::Node& node) const;
    // The buffer record at that address, if it is one of the mirrored nodes' buffers.
    BufferData* findBuffer(quintptr address) const;
    // Take a record out of every list and drop the creation reference (a device with its nodes). The
    // tree calls the row operations below instead, inside its row brackets.
    void removeNode(NodeData* node);
    void removeDevice(DeviceData* device);
    // A record that is still shown or has a job running is not in use only when neither holds.
    static bool isInUse(const NodeData* node);
    static bool isInUse(const DeviceData* device);

    // The rows of the device tree: the device list and each device's nodes. The tree model calls these
    // between its begin/end calls; removing a row removes the record for good.
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

    // Configurations: apply (when asked) and remember the node's current configuration. Any thread.
    void setDepthConfiguration(NodeData* node, const Zerlane::DepthNode::Configuration& configuration, bool apply);
    void setColorConfiguration(NodeData* node, const Zerlane::ColorNode::Configuration& configuration, bool apply);
    void setAudioConfiguration(NodeData* node, const Zerlane::AudioNode::Configuration& configuration, bool apply);
    // A copy of the node's current configuration as last applied or reported (any thread); a default
    // one for a node of another kind.
    Zerlane::DepthNode::Configuration depthConfiguration(const NodeData* node) const;
    Zerlane::ColorNode::Configuration colorConfiguration(const NodeData* node) const;
    Zerlane::AudioNode::Configuration audioConfiguration(const NodeData* node) const;

    // Buffers shown in views: their node's sample event is bound while at least one is shown.
    void addDisplayedBuffer(BufferData* buffer);
    void removeDisplayedBuffer(BufferData* buffer);
    std::vector<BufferData*> displayedBuffers() const;

    // A view of the buffer opened: its map's enable property ("enableDepthMap" ...) is counted and set
    // on ("Combined" also switches the confidence map on, uncounted). A view closed: the count drops,
    // and the last one switches the map off, unless the camera has gone.
    void switchMapOn(BufferData* buffer);
    void switchMapOff(BufferData* buffer);

private:
    friend class Singleton<CameraManager>;
    CameraManager();

    static Zerlane::Context openContext();
    NodeData* buildNodeRecord(const Zerlane::Node& node, DeviceData* deviceRecord);
    void createBuffers(NodeData* node);
    // Takes a node out of the node list (unbinding its shown buffers) and drops its creation reference.
    void forgetNode(NodeData* node);
    void warn(const QString& text) const;
    // Requests or releases control of a device or node; false (after reporting why) when refused.
    template <class Handle, class Flag>
    bool changeControl(const Handle& handle, Flag& controlled, bool request);
    struct NodeConfigurations;
    template <class Kind, class Configuration>
    void setConfiguration(NodeData* node, const Configuration& configuration, bool apply,
                          Configuration NodeConfigurations::*current);
    NodeConfigurations* configurationsOf(const NodeData* node) const;
    template <class Configuration>
    Configuration storedConfiguration(const NodeData* node, Configuration NodeConfigurations::*current) const;

    mutable std::recursive_mutex m_mutex;
    QMutex m_buffersMutex;
    Zerlane::Context m_context;
    std::vector<DeviceData*> m_devices;
    std::vector<NodeData*> m_nodes;
    std::vector<BufferData*> m_buffers; // displayed buffers
    QMap<QString, int> m_propertyUses;  // views using each map's enable property
    CameraManagerListener* m_mainWindow = nullptr;
    int m_streamingState = Stopped;
    quint64 m_referenceTime = 0;

    mutable QMutex m_sharedMutex; // the palette and preferences pointers
    std::shared_ptr<const DepthPalette> m_palette;
    DisplayPreferences m_preferences;

    // Configuration lists and current configurations read at discovery, owned here and pointed to by
    // the node records.
    std::vector<std::unique_ptr<NodeConfigurations>> m_configurations;
};
