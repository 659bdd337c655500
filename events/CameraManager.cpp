#include "events/CameraManager.h"

#include "app/shared/StartupOptions.h"
#include "app/shared/TextUtils.h"
#include "app/shared/ViewerLog.h"
#include "camera/AudioNodeData.h"
#include "camera/BufferData.h"
#include "camera/ColorNodeData.h"
#include "camera/DepthNodeData.h"
#include "camera/DeviceData.h"
#include "camera/StandardDeviationHistory.h"
#include "events/CameraManagerListener.h"
#include "events/ZerlaneThread.h"
#include "palettes/DepthPalette.h"

#include <QMutexLocker>

#include <algorithm>
#include <mutex>

using Zerlane::Utils::Format;

namespace {

template <class List, class Item>
void eraseValue(List& list, Item item)
{
    list.erase(std::remove(list.begin(), list.end(), item), list.end());
}

} // namespace

struct CameraManager::NodeConfigurations {
    std::vector<Zerlane::DepthNode::Configuration> depthList;
    Zerlane::DepthNode::Configuration depthCurrent;
    std::vector<Zerlane::ColorNode::Configuration> colorList;
    Zerlane::ColorNode::Configuration colorCurrent;
    std::vector<Zerlane::AudioNode::Configuration> audioList;
    Zerlane::AudioNode::Configuration audioCurrent;
    const NodeData* node = nullptr;
};

CameraManager::CameraManager()
    : m_context(openContext())
{
    std::shared_ptr<const DepthPalette> palette(DepthPalette::fromXmlFile(":/palettes/closepalette.xml"));
    if (!palette) // only a broken build lacks the resource; keep colouring defined
        palette.reset(DepthPalette::greyScale(32768));
    m_palette = std::move(palette);
}

CameraManager::~CameraManager()
{
    for (DeviceData* device : m_devices)
        device->release();
    m_devices.clear();
    for (NodeData* node : m_nodes)
        node->release();
    m_nodes.clear();
}

Zerlane::Context CameraManager::openContext()
{
    if (StartupOptions::standalone())
        return Zerlane::Context::createStandalone();
    if (StartupOptions::port() != 0)
        return Zerlane::Context::create("localhost", StartupOptions::port());
    return Zerlane::Context::create();
}

Zerlane::Context CameraManager::context() const
{
    return m_context;
}

void CameraManager::setMainWindow(CameraManagerListener* window)
{
    m_mainWindow = window;
}

void CameraManager::warn(const QString& text) const
{
    if (m_mainWindow)
        m_mainWindow->showWarning(text);
    else
        ViewerLog::warning(text.toStdString());
}

int CameraManager::streamingState() const
{
    const std::lock_guard lock(m_mutex);
    return m_streamingState;
}

void CameraManager::setStreamingState(int state)
{
    const std::lock_guard lock(m_mutex);
    m_streamingState = state;
}

void CameraManager::startNodes()
{
    const std::lock_guard lock(m_mutex);
    m_context.startNodes();
    m_streamingState = Streaming;
}

void CameraManager::stopNodes()
{
    const std::lock_guard lock(m_mutex);
    m_context.stopNodes();
    m_streamingState = Stopped;
}

std::shared_ptr<const DepthPalette> CameraManager::palette() const
{
    QMutexLocker lock(&m_sharedMutex);
    return m_palette;
}

void CameraManager::setPalette(const DepthPalette& palette)
{
    // A new table: a frame being coloured through the old one keeps it until it is done.
    auto copy = std::make_shared<const DepthPalette>(palette);
    QMutexLocker lock(&m_sharedMutex);
    m_palette = std::move(copy);
}

DisplayPreferences CameraManager::displayPreferences() const
{
    QMutexLocker lock(&m_sharedMutex);
    return m_preferences;
}

void CameraManager::setDisplayPreferences(const DisplayPreferences& preferences)
{
    QMutexLocker lock(&m_sharedMutex);
    m_preferences = preferences;
}

void CameraManager::setReferenceTime(quint64 time)
{
    const std::lock_guard lock(m_mutex);
    m_referenceTime = time;
}

quint64 CameraManager::referenceTime() const
{
    const std::lock_guard lock(m_mutex);
    return m_referenceTime;
}

qint64 CameraManager::relativeTime(quint64 time) const
{
    return qint64(time - referenceTime());
}

// ---- Discovery --------------------------------------------------------------------------------

DeviceData* CameraManager::addDevice(const Zerlane::Device& device)
{
    std::vector<Zerlane::PropertyBase> properties;
    try {
        properties = device.getType().getProperties();
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Format("Could not read device properties: %") % e.getMessage());
    }
    return new DeviceData(device, properties);
}

NodeData* CameraManager::addNode(const Zerlane::Device& device, const Zerlane::Node& node)
{
    try {
        const std::string typeName = node.getType().name();
        if ((node.is<Zerlane::AudioNode>() && StartupOptions::disableAudio())
            || (node.is<Zerlane::ColorNode>() && StartupOptions::disableColor())
            || (node.is<Zerlane::DepthNode>() && StartupOptions::disableDepth())) {
            ViewerLog::info(Format("A % was disabled") % typeName);
            return nullptr;
        }
        if (node.is<Zerlane::UnsupportedNode>()) {
            const auto reason = Zerlane::UnsupportedNode(node).getReason();
            ViewerLog::warning(Format("Unsupported Node reason: %") % Zerlane::UnsupportedNode::Reason_toString(reason));
            return nullptr;
        }
        if (!node.is<Zerlane::DepthNode>() && !node.is<Zerlane::ColorNode>() && !node.is<Zerlane::AudioNode>()) {
            ViewerLog::error("unknown node type");
            return nullptr;
        }
        DeviceData* deviceRecord = findDevice(device);
        if (!deviceRecord) {
            ViewerLog::warning("No corresponding device found");
            return nullptr;
        }
        NodeData* record = buildNodeRecord(node, deviceRecord);
        createBuffers(record);
        record->controlled = deviceRecord->controlled;
        const std::lock_guard lock(m_mutex);
        record->position = int32_t(deviceRecord->nodes.size());
        m_nodes.push_back(record);
        return record;
    } catch (const Zerlane::Exception& e) {
        ViewerLog::error(Format("Could not add node : %") % e.getMessage());
        return nullptr;
    }
}

NodeData* CameraManager::buildNodeRecord(const Zerlane::Node& node, DeviceData* deviceRecord)
{
    const std::vector<Zerlane::PropertyBase> properties = node.getType().getProperties();
    auto configurations = std::make_unique<NodeConfigurations>();
    NodeData* record = nullptr;

    // A node whose configurations cannot be read is still mirrored, with what could be read.
    auto readList = [](auto read, const char* failure) {
        try {
            return read();
        } catch (const Zerlane::Exception&) {
            ViewerLog::warning(failure);
            return decltype(read())();
        }
    };
    auto readCurrent = [](auto read) {
        try {
            return read();
        } catch (const Zerlane::Exception&) {
            ViewerLog::warning("Unable to get current configuration");
            return decltype(read())();
        }
    };

    if (node.is<Zerlane::DepthNode>()) {
        Zerlane::DepthNode depth(node);
        configurations->depthList = readList([&] { return depth.getConfigurations(); },
                                             "Unable to get available depth node configurations");
        configurations->depthCurrent = readCurrent([&] { return depth.getConfiguration(); });
        const float range = depth.getRange();
        record = new DepthNodeData(node, deviceRecord, properties, &configurations->depthList,
                                   &configurations->depthCurrent, range);
    } else if (node.is<Zerlane::ColorNode>()) {
        Zerlane::ColorNode color(node);
        configurations->colorList = readList([&] { return color.getConfigurations(); },
                                             "Unable to get available color node configurations");
        configurations->colorCurrent = readCurrent([&] { return color.getConfiguration(); });
        record = new ColorNodeData(node, deviceRecord, properties, &configurations->colorList,
                                   &configurations->colorCurrent);
    } else {
        Zerlane::AudioNode audio(node);
        configurations->audioList = readList([&] { return audio.getConfigurations(); },
                                             "Unable to get available audio node configurations");
        configurations->audioCurrent = readCurrent([&] { return audio.getConfiguration(); });
        record = new AudioNodeData(node, deviceRecord, properties, &configurations->audioList,
                                   &configurations->audioCurrent);
    }
    configurations->node = record;
    const std::lock_guard lock(m_mutex);
    m_configurations.push_back(std::move(configurations));
    return record;
}

void CameraManager::createBuffers(NodeData* node)
{
    static const uint32_t depthBuffers[] = {BufferData::Phase, BufferData::Confidence, BufferData::Depth,
                                            BufferData::DepthFloatingPoint, BufferData::Vertices,
                                            BufferData::VerticesFloatingPoint, BufferData::UV,
                                            BufferData::StandardDeviation};
    if (node->node.is<Zerlane::DepthNode>()) {
        for (uint32_t type : depthBuffers)
            node->buffers.push_back(new BufferData(node, type));
    } else if (node->node.is<Zerlane::ColorNode>()) {
        node->buffers.push_back(new BufferData(node, BufferData::Color));
    } else if (node->node.is<Zerlane::AudioNode>()) {
        node->buffers.push_back(new BufferData(node, BufferData::Audio));
    }
    for (size_t i = 0; i < node->buffers.size(); ++i)
        node->buffers[i]->position = int32_t(i);
}

DeviceData* CameraManager::findDevice(const Zerlane::Device& device) const
{
    const std::lock_guard lock(m_mutex);
    for (DeviceData* record : m_devices) {
        if (record->device == device)
            return record;
    }
    return nullptr;
}

NodeData* CameraManager::findNode(const Zerlane::Node& node) const
{
    const std::lock_guard lock(m_mutex);
    for (NodeData* record : m_nodes) {
        if (record->node == node)
            return record;
    }
    return nullptr;
}

BufferData* CameraManager::findBuffer(quintptr address) const
{
    const std::lock_guard lock(m_mutex);
    for (NodeData* node : m_nodes) {
        for (BufferData* buffer : node->buffers) {
            if (quintptr(buffer) == address)
                return buffer;
        }
    }
    return nullptr;
}

bool CameraManager::isInUse(const NodeData* node)
{
    if (node->activeCount() > 0)
        return true;
    for (const BufferData* buffer : node->buffers) {
        if (buffer->subWindow)
            return true;
    }
    return false;
}

bool CameraManager::isInUse(const DeviceData* device)
{
    if (device->activeCount() > 0)
        return true;
    for (const NodeData* node : device->nodes) {
        if (isInUse(node))
            return true;
    }
    return false;
}

void CameraManager::removeNode(NodeData* node)
{
    DeviceData* device = node->device;
    int row = -1;
    {
        const std::lock_guard lock(m_mutex);
        auto it = std::find(device->nodes.begin(), device->nodes.end(), node);
        if (it != device->nodes.end())
            row = int(it - device->nodes.begin());
    }
    if (row >= 0)
        removeNodeAt(device, row);
    else
        forgetNode(node); // built but never shown under its device
}

void CameraManager::removeDevice(DeviceData* device)
{
    int row = -1;
    {
        const std::lock_guard lock(m_mutex);
        auto it = std::find(m_devices.begin(), m_devices.end(), device);
        if (it != m_devices.end())
            row = int(it - m_devices.begin());
    }
    if (row >= 0)
        removeDeviceAt(row);
}

void CameraManager::forgetNode(NodeData* node)
{
    for (BufferData* buffer : node->buffers)
        removeDisplayedBuffer(buffer);
    bool owned = false;
    {
        const std::lock_guard lock(m_mutex);
        owned = std::find(m_nodes.begin(), m_nodes.end(), node) != m_nodes.end();
        eraseValue(m_nodes, node);
    }
    if (owned)
        node->release();
}

// ---- The tree model's store ---------------------------------------------------------------------

int CameraManager::deviceCount() const
{
    const std::lock_guard lock(m_mutex);
    return int(m_devices.size());
}

DeviceData* CameraManager::deviceAt(int row) const
{
    const std::lock_guard lock(m_mutex);
    return row >= 0 && row < int(m_devices.size()) ? m_devices[size_t(row)] : nullptr;
}

void CameraManager::appendDevice(DeviceData* device)
{
    const std::lock_guard lock(m_mutex);
    device->position = int32_t(m_devices.size());
    m_devices.push_back(device);
}

void CameraManager::appendNodeToDevice(NodeData* node)
{
    const std::lock_guard lock(m_mutex);
    node->position = int32_t(node->device->nodes.size());
    node->device->nodes.push_back(node);
}

void CameraManager::removeDeviceAt(int row)
{
    DeviceData* device = nullptr;
    std::vector<NodeData*> nodes;
    {
        const std::lock_guard lock(m_mutex);
        if (row < 0 || row >= int(m_devices.size()))
            return;
        device = m_devices[size_t(row)];
        m_devices.erase(m_devices.begin() + row);
        for (size_t i = 0; i < m_devices.size(); ++i)
            m_devices[i]->position = int32_t(i);
        // The device's nodes go with it.
        nodes.swap(device->nodes);
    }
    for (NodeData* node : nodes)
        forgetNode(node);
    device->release();
}

void CameraManager::removeNodeAt(DeviceData* device, int row)
{
    NodeData* node = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        if (row < 0 || row >= int(device->nodes.size()))
            return;
        node = device->nodes[size_t(row)];
        device->nodes.erase(device->nodes.begin() + row);
        for (size_t i = 0; i < device->nodes.size(); ++i)
            device->nodes[i]->position = int32_t(i);
    }
    forgetNode(node);
}

std::vector<DeviceData*> CameraManager::devices() const
{
    const std::lock_guard lock(m_mutex);
    return m_devices;
}

std::vector<NodeData*> CameraManager::nodes() const
{
    const std::lock_guard lock(m_mutex);
    return m_nodes;
}

// ---- Registration and control -------------------------------------------------------------------

void CameraManager::registerNode(NodeData* node, bool doRegister)
{
    try {
        if (doRegister)
            m_context.registerNode(node->node);
        else
            m_context.unregisterNode(node->node);
        node->registered = doRegister;
    } catch (const Zerlane::Exception& e) {
        warn(QString("Could not %1 node : %2")
                 .arg(doRegister ? "register" : "unregister", QString::fromStdString(e.getMessage())));
    }
    if (m_mainWindow)
        m_mainWindow->registrationChanged(node);
}

void CameraManager::registerDevice(DeviceData* device, bool doRegister)
{
    device->registered = doRegister;
    if (m_mainWindow)
        m_mainWindow->registrationChanged(device);
}

template <class Handle, class Flag>
bool CameraManager::changeControl(const Handle& handle, Flag& controlled, bool request)
{
    // Asking for what is held already (or releasing what is not) calls nothing.
    try {
        if (request && !controlled) {
            m_context.requestControl(handle, 0);
            controlled = true;
        } else if (!request && controlled) {
            m_context.releaseControl(handle);
            controlled = false;
        }
        return true;
    } catch (const Zerlane::TimeoutException&) {
        warn("Another application has already\nclaimed control over this device.");
    } catch (const Zerlane::Exception& e) {
        ViewerLog::error(Format("Could not % control: %") % (request ? "request" : "release") % e.getMessage());
    }
    return false;
}

void CameraManager::controlDevice(DeviceData* device, bool request)
{
    if (changeControl(device->device, device->controlled, request)) {
        const std::lock_guard lock(m_mutex);
        for (NodeData* node : m_nodes) {
            if (node->device == device)
                node->controlled = device->controlled;
        }
    }
    if (m_mainWindow)
        m_mainWindow->controlChanged(device);
}

void CameraManager::controlNode(NodeData* node, bool request)
{
    changeControl(node->node, node->controlled, request);
    if (m_mainWindow)
        m_mainWindow->controlChanged(node);
}

// ---- Properties ------------------------------------------------------------------------------------

namespace {

Zerlane::Interface interfaceOf(DeviceNodeBufferData* record)
{
    if (record->kind() == DeviceNodeBufferData::KindDevice)
        return Zerlane::Interface(static_cast<DeviceData*>(record)->device);
    return Zerlane::Interface(static_cast<NodeData*>(record)->node);
}

void clearDataReceived(DeviceNodeBufferData* record)
{
    if (record->kind() == DeviceNodeBufferData::KindDevice)
        static_cast<DeviceData*>(record)->dataReceived = false;
    else
        static_cast<NodeData*>(record)->dataReceived = false;
}

} // namespace

template <class T>
bool CameraManager::setProperty(DeviceNodeBufferData* record, const QString& name, T value)
{
    const QByteArray localName = name.toLocal8Bit();
    try {
        Zerlane::Property<T>::setValue(interfaceOf(record), localName.constData(), value);
        clearDataReceived(record);
        if (m_mainWindow)
            m_mainWindow->propertySet(record);
        return true;
    } catch (const Zerlane::Exception& e) {
        warn(QString("Could not set property %1: %2").arg(name, QString::fromStdString(e.getMessage())));
        return false;
    }
}

template <class T>
T CameraManager::getProperty(DeviceNodeBufferData* record, const QString& name)
{
    const QByteArray localName = name.toLocal8Bit();
    try {
        return Zerlane::Property<T>::getValue(interfaceOf(record), localName.constData());
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Format("Could not get property %: %") % localName.constData() % e.getMessage());
        return T();
    }
}

template bool CameraManager::setProperty<bool>(DeviceNodeBufferData*, const QString&, bool);
template bool CameraManager::setProperty<int32_t>(DeviceNodeBufferData*, const QString&, int32_t);
template bool CameraManager::setProperty<float>(DeviceNodeBufferData*, const QString&, float);
template bool CameraManager::setProperty<Zerlane::ExposureAuto>(DeviceNodeBufferData*, const QString&, Zerlane::ExposureAuto);
template bool CameraManager::getProperty<bool>(DeviceNodeBufferData*, const QString&);
template int32_t CameraManager::getProperty<int32_t>(DeviceNodeBufferData*, const QString&);
template float CameraManager::getProperty<float>(DeviceNodeBufferData*, const QString&);
template Zerlane::ExposureAuto CameraManager::getProperty<Zerlane::ExposureAuto>(DeviceNodeBufferData*, const QString&);

// ---- Configurations --------------------------------------------------------------------------------

CameraManager::NodeConfigurations* CameraManager::configurationsOf(const NodeData* node) const
{
    const std::lock_guard lock(m_mutex);
    for (const auto& configurations : m_configurations) {
        if (configurations->node == node)
            return configurations.get();
    }
    return nullptr;
}

namespace {

// After a configuration change the views start over: the record has received nothing of the new
// configuration yet, and every buffer's view and statistics need a reset.
void markConfigurationChanged(NodeData* node)
{
    node->dataReceived = false;
    if (node->node.is<Zerlane::DepthNode>())
        StandardDeviationHistory::requestReset(*static_cast<DepthNodeData*>(node));
    for (BufferData* buffer : node->buffers) {
        buffer->resetPending[0] = true;
        buffer->resetPending[1] = true;
    }
}

} // namespace

template <class Kind, class Configuration>
void CameraManager::setConfiguration(NodeData* node, const Configuration& configuration, bool apply,
                                     Configuration NodeConfigurations::*current)
{
    if (apply)
        Kind(node->node).setConfiguration(configuration);
    markConfigurationChanged(node);
    if (m_mainWindow)
        m_mainWindow->configurationChanged(node);
    const std::lock_guard lock(m_mutex);
    if (NodeConfigurations* stored = configurationsOf(node))
        stored->*current = configuration;
}

void CameraManager::setDepthConfiguration(NodeData* node, const Zerlane::DepthNode::Configuration& configuration, bool apply)
{
    setConfiguration<Zerlane::DepthNode>(node, configuration, apply, &NodeConfigurations::depthCurrent);
}

void CameraManager::setColorConfiguration(NodeData* node, const Zerlane::ColorNode::Configuration& configuration, bool apply)
{
    setConfiguration<Zerlane::ColorNode>(node, configuration, apply, &NodeConfigurations::colorCurrent);
}

void CameraManager::setAudioConfiguration(NodeData* node, const Zerlane::AudioNode::Configuration& configuration, bool apply)
{
    setConfiguration<Zerlane::AudioNode>(node, configuration, apply, &NodeConfigurations::audioCurrent);
}

template <class Configuration>
Configuration CameraManager::storedConfiguration(const NodeData* node, Configuration NodeConfigurations::*current) const
{
    const std::lock_guard lock(m_mutex);
    const NodeConfigurations* stored = configurationsOf(node);
    return stored ? stored->*current : Configuration();
}

Zerlane::DepthNode::Configuration CameraManager::depthConfiguration(const NodeData* node) const
{
    return storedConfiguration(node, &NodeConfigurations::depthCurrent);
}

Zerlane::ColorNode::Configuration CameraManager::colorConfiguration(const NodeData* node) const
{
    return storedConfiguration(node, &NodeConfigurations::colorCurrent);
}

Zerlane::AudioNode::Configuration CameraManager::audioConfiguration(const NodeData* node) const
{
    return storedConfiguration(node, &NodeConfigurations::audioCurrent);
}

// ---- Displayed buffers -------------------------------------------------------------------------------

void CameraManager::addDisplayedBuffer(BufferData* buffer)
{
    bool firstOfNode = true;
    {
        const std::lock_guard lock(m_mutex);
        if (std::find(m_buffers.begin(), m_buffers.end(), buffer) != m_buffers.end())
            return;
        for (BufferData* shown : m_buffers)
            firstOfNode = firstOfNode && shown->node != buffer->node;
        m_buffers.push_back(buffer);
    }
    if (firstOfNode)
        ZerlaneThread::instance()->bindSamples(buffer->node);
}

void CameraManager::removeDisplayedBuffer(BufferData* buffer)
{
    bool lastOfNode = true;
    {
        const std::lock_guard lock(m_mutex);
        auto it = std::find(m_buffers.begin(), m_buffers.end(), buffer);
        if (it == m_buffers.end())
            return;
        m_buffers.erase(it);
        for (BufferData* shown : m_buffers)
            lastOfNode = lastOfNode && shown->node != buffer->node;
    }
    if (lastOfNode)
        ZerlaneThread::instance()->unbindSamples(buffer->node);
}

std::vector<BufferData*> CameraManager::displayedBuffers() const
{
    const std::lock_guard lock(m_mutex);
    return m_buffers;
}

void CameraManager::switchMapOn(BufferData* buffer)
{
    const QString property = BufferData::enableProperty(buffer->type);
    if (property.isEmpty())
        return;
    {
        const std::lock_guard lock(m_mutex);
        ++m_propertyUses[property];
    }
    // Set whatever the count was: the camera may have switched the map off meanwhile.
    setProperty<bool>(buffer->node, property, true);
    if (buffer->type == BufferData::Combined)
        setProperty<bool>(buffer->node, "enableConfidenceMap", true);
}

void CameraManager::switchMapOff(BufferData* buffer)
{
    // Only the map's own use counts; "Combined" leaves the confidence map it also switched on.
    const QString property = BufferData::enableProperty(buffer->type);
    if (property.isEmpty())
        return;
    int uses = 0;
    {
        const std::lock_guard lock(m_mutex);
        int& count = m_propertyUses[property];
        count = std::max(0, count - 1);
        uses = count;
    }
    // A camera that is gone has nothing left to switch off.
    if (uses == 0 && !buffer->node->disconnected)
        setProperty<bool>(buffer->node, property, false);
}
