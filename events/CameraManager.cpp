#include "events/CameraManager.h"

#include "app/SingletonHolder.h"
#include "app/StartupOptions.h"
#include "app/ViewerLog.h"
#include "camera/AudioNodeData.h"
#include "camera/BufferData.h"
#include "camera/ColorNodeData.h"
#include "camera/DepthNodeData.h"
#include "camera/DeviceData.h"
#include "events/ZerlaneThread.h"
#include "mainwindow/ZerlaneViewer.h"
#include "palettes/DepthPalette.h"
#include "tree/DeviceTreeModel.h"
#include "widgets/ZRMessageBox.h"

#include <QMutexLocker>

#include <algorithm>

using Zerlane::Utils::Format;

namespace {

SingletonHolder<CameraManager> holder;

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

CameraManager* CameraManager::instance()
{
    return holder.instance([] { return new CameraManager(); });
}

CameraManager* CameraManager::existingInstance()
{
    return holder.existing();
}

void CameraManager::destroyInstance()
{
    holder.destroy();
}

CameraManager::CameraManager()
    : m_context(openContext())
{
    m_currentPalette.reset(DepthPalette::fromXmlFile(":/palettes/closepalette.xml"));
    if (!m_currentPalette) // only a broken build lacks the resource; keep colouring defined
        m_currentPalette.reset(DepthPalette::greyScale(32768));
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

void CameraManager::setMainWindow(ZerlaneViewer* window)
{
    m_mainWindow = window;
}

ZerlaneViewer* CameraManager::mainWindow() const
{
    return m_mainWindow;
}

void CameraManager::setWorkingThread(WorkingThread* worker)
{
    m_worker = worker;
}

WorkingThread* CameraManager::workingThread() const
{
    return m_worker;
}

void CameraManager::setTreeModel(DeviceTreeModel* model)
{
    m_treeModel = model;
}

DeviceTreeModel* CameraManager::treeModel() const
{
    return m_treeModel;
}

int CameraManager::streamingState() const
{
    QMutexLocker lock(&m_mutex);
    return m_streamingState;
}

void CameraManager::setStreamingState(int state)
{
    QMutexLocker lock(&m_mutex);
    m_streamingState = state;
}

void CameraManager::startNodes()
{
    QMutexLocker lock(&m_mutex);
    m_context.startNodes();
    m_streamingState = Streaming;
}

void CameraManager::stopNodes()
{
    QMutexLocker lock(&m_mutex);
    m_context.stopNodes();
    m_streamingState = Stopped;
}

const DepthPalette& CameraManager::palette() const
{
    return *m_currentPalette;
}

void CameraManager::setPalette(const DepthPalette& palette)
{
    // Copy into the existing table: the event thread colours through it without a lock, and a copy
    // of the same size never moves it.
    *m_currentPalette = palette;
}

void CameraManager::setReferenceTime(quint64 time)
{
    m_referenceTime = time;
}

quint64 CameraManager::referenceTime() const
{
    return m_referenceTime;
}

qint64 CameraManager::relativeTime(quint64 time) const
{
    return qint64(time - m_referenceTime);
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
    auto* record = new DeviceData(device, properties);
    insertIntoTree(record);
    return record;
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
        NodeData* record = buildNodeRecord(device, node, deviceRecord);
        createBuffers(record);
        record->controlled = deviceRecord->controlled;
        {
            QMutexLocker lock(&m_mutex);
            m_nodes.push_back(record);
        }
        insertIntoTree(record);
        return record;
    } catch (const Zerlane::Exception& e) {
        ViewerLog::error(Format("Could not add node : %") % e.getMessage());
        return nullptr;
    }
}

NodeData* CameraManager::buildNodeRecord(const Zerlane::Device&, const Zerlane::Node& node, DeviceData* deviceRecord)
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
    QMutexLocker lock(&m_mutex);
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

void CameraManager::insertIntoTree(DeviceData* device)
{
    const int row = deviceCount();
    device->position = row;
    if (m_treeModel)
        m_treeModel->insertItem(row, device, QModelIndex());
    else
        appendDevice(device);
}

void CameraManager::insertIntoTree(NodeData* node)
{
    DeviceData* device = node->device;
    int row = 0;
    {
        QMutexLocker lock(&m_mutex);
        row = int(device->nodes.size());
    }
    node->position = row;
    if (m_treeModel)
        m_treeModel->insertItem(row, node, m_treeModel->indexOf(device));
    else
        appendNodeToDevice(node);
}

DeviceData* CameraManager::findDevice(const Zerlane::Device& device) const
{
    QMutexLocker lock(&m_mutex);
    for (DeviceData* record : m_devices) {
        if (record->device == device)
            return record;
    }
    return nullptr;
}

NodeData* CameraManager::findNode(const Zerlane::Node& node) const
{
    QMutexLocker lock(&m_mutex);
    for (NodeData* record : m_nodes) {
        if (record->node == node)
            return record;
    }
    return nullptr;
}

BufferData* CameraManager::findBuffer(quintptr address) const
{
    QMutexLocker lock(&m_mutex);
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
        QMutexLocker lock(&m_mutex);
        auto it = std::find(device->nodes.begin(), device->nodes.end(), node);
        if (it != device->nodes.end())
            row = int(it - device->nodes.begin());
    }
    if (row >= 0) {
        if (m_treeModel)
            m_treeModel->removeItem(row, m_treeModel->indexOf(device));
        else
            removeNodeAt(device, row);
    }
    for (BufferData* buffer : node->buffers)
        removeDisplayedBuffer(buffer);
    if (ZerlaneThread* thread = ZerlaneThread::existingInstance(); thread && thread->currentNode() == node)
        thread->setCurrentNode(nullptr);
    bool owned = false;
    {
        QMutexLocker lock(&m_mutex);
        owned = std::find(m_nodes.begin(), m_nodes.end(), node) != m_nodes.end();
        eraseValue(m_nodes, node);
    }
    if (owned)
        node->release();
}

void CameraManager::removeDevice(DeviceData* device)
{
    int row = -1;
    {
        QMutexLocker lock(&m_mutex);
        auto it = std::find(m_devices.begin(), m_devices.end(), device);
        if (it == m_devices.end())
            return;
        row = int(it - m_devices.begin());
    }
    const std::vector<NodeData*> nodes = device->nodes;
    for (NodeData* node : nodes) {
        for (BufferData* buffer : node->buffers)
            removeDisplayedBuffer(buffer);
    }
    if (m_treeModel)
        m_treeModel->removeItem(row, QModelIndex());
    else
        removeDeviceAt(row);
}

// ---- The tree model's store ---------------------------------------------------------------------

int CameraManager::deviceCount() const
{
    QMutexLocker lock(&m_mutex);
    return int(m_devices.size());
}

DeviceData* CameraManager::deviceAt(int row) const
{
    QMutexLocker lock(&m_mutex);
    return row >= 0 && row < int(m_devices.size()) ? m_devices[size_t(row)] : nullptr;
}

void CameraManager::appendDevice(DeviceData* device)
{
    QMutexLocker lock(&m_mutex);
    device->position = int32_t(m_devices.size());
    m_devices.push_back(device);
}

void CameraManager::appendNodeToDevice(NodeData* node)
{
    QMutexLocker lock(&m_mutex);
    node->position = int32_t(node->device->nodes.size());
    node->device->nodes.push_back(node);
}

void CameraManager::removeDeviceAt(int row)
{
    DeviceData* device = nullptr;
    std::vector<NodeData*> released;
    {
        QMutexLocker lock(&m_mutex);
        if (row < 0 || row >= int(m_devices.size()))
            return;
        device = m_devices[size_t(row)];
        m_devices.erase(m_devices.begin() + row);
        for (size_t i = 0; i < m_devices.size(); ++i)
            m_devices[i]->position = int32_t(i);
        // The device's nodes go with it.
        for (NodeData* node : device->nodes) {
            if (std::find(m_nodes.begin(), m_nodes.end(), node) != m_nodes.end())
                released.push_back(node);
            eraseValue(m_nodes, node);
        }
        device->nodes.clear();
    }
    ZerlaneThread* thread = ZerlaneThread::existingInstance();
    for (NodeData* node : released) {
        if (thread && thread->currentNode() == node)
            thread->setCurrentNode(nullptr);
        node->release();
    }
    device->release();
}

void CameraManager::removeNodeAt(DeviceData* device, int row)
{
    QMutexLocker lock(&m_mutex);
    if (row < 0 || row >= int(device->nodes.size()))
        return;
    device->nodes.erase(device->nodes.begin() + row);
    for (size_t i = 0; i < device->nodes.size(); ++i)
        device->nodes[i]->position = int32_t(i);
}

std::vector<DeviceData*> CameraManager::devices() const
{
    QMutexLocker lock(&m_mutex);
    return m_devices;
}

std::vector<NodeData*> CameraManager::nodes() const
{
    QMutexLocker lock(&m_mutex);
    return m_nodes;
}

// ---- Registration and control -------------------------------------------------------------------

void CameraManager::refreshRow(DeviceNodeBufferData* record) const
{
    if (m_treeModel)
        m_treeModel->refreshRecord(record);
}

void CameraManager::registerNode(NodeData* node, bool doRegister)
{
    try {
        if (doRegister)
            m_context.registerNode(node->node);
        else
            m_context.unregisterNode(node->node);
        node->registered = doRegister;
        refreshRow(node);
    } catch (const Zerlane::Exception& e) {
        ZRMessageBox::warning(QString("Could not %1 node : %2")
                                  .arg(doRegister ? "register" : "unregister", QString::fromStdString(e.getMessage())));
    }
    if (m_mainWindow)
        m_mainWindow->updateNodeRegisterAction(node->registered);
}

void CameraManager::registerDevice(DeviceData* device, bool doRegister)
{
    try {
        device->registered = doRegister;
        refreshRow(device);
    } catch (const Zerlane::Exception& e) {
        ZRMessageBox::warning(QString("Could not %1 device : %2")
                                  .arg(doRegister ? "register" : "unregister", QString::fromStdString(e.getMessage())));
    }
    if (m_mainWindow)
        m_mainWindow->updateDeviceRegisterAction(device->registered);
}

template <class Handle>
bool CameraManager::changeControl(const Handle& handle, bool& controlled, bool request)
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
        ZRMessageBox::warning("Another application has already\nclaimed control over this device.");
    } catch (const Zerlane::Exception& e) {
        ViewerLog::error(Format("Could not % control: %") % (request ? "request" : "release") % e.getMessage());
    }
    return false;
}

void CameraManager::controlDevice(DeviceData* device, bool request)
{
    if (changeControl(device->device, device->controlled, request)) {
        refreshRow(device);
        QMutexLocker lock(&m_mutex);
        for (NodeData* node : m_nodes) {
            if (node->device == device) {
                node->controlled = device->controlled;
                refreshRow(node);
            }
        }
    }
    if (m_mainWindow)
        m_mainWindow->updateDeviceControlAction(device->controlled);
}

void CameraManager::controlNode(NodeData* node, bool request)
{
    if (changeControl(node->node, node->controlled, request))
        refreshRow(node);
    if (m_mainWindow)
        m_mainWindow->updateNodeControlAction(node->controlled);
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
            m_mainWindow->onPropertySet(record);
        return true;
    } catch (const Zerlane::Exception& e) {
        ZRMessageBox::warning(QString("Could not set property %1: %2").arg(name, QString::fromStdString(e.getMessage())));
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
    QMutexLocker lock(&m_mutex);
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
    for (BufferData* buffer : node->buffers)
        buffer->resetPending[0] = buffer->resetPending[1] = true;
}

} // namespace

template <class Kind, class Configuration>
void CameraManager::setConfiguration(NodeData* node, const Configuration& configuration, bool apply,
                                     Configuration NodeConfigurations::*current)
{
    if (apply)
        Kind(node->node).setConfiguration(configuration);
    markConfigurationChanged(node);
    if (m_mainWindow) // from the worker: the window re-evaluates its actions on its own thread
        QMetaObject::invokeMethod(m_mainWindow, "updateActions", Qt::QueuedConnection);
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

void CameraManager::storeReportedConfiguration(NodeData* node)
{
    if (node->node.is<Zerlane::DepthNode>())
        setDepthConfiguration(node, Zerlane::DepthNode(node->node).getConfiguration(), false);
    else if (node->node.is<Zerlane::ColorNode>())
        setColorConfiguration(node, Zerlane::ColorNode(node->node).getConfiguration(), false);
    else if (node->node.is<Zerlane::AudioNode>())
        setAudioConfiguration(node, Zerlane::AudioNode(node->node).getConfiguration(), false);
}

// ---- Displayed buffers -------------------------------------------------------------------------------

void CameraManager::addDisplayedBuffer(BufferData* buffer)
{
    bool firstOfNode = true;
    {
        QMutexLocker lock(&m_mutex);
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
        QMutexLocker lock(&m_mutex);
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
    QMutexLocker lock(&m_mutex);
    return m_buffers;
}

int CameraManager::incrementPropertyUse(const QString& name)
{
    QMutexLocker lock(&m_mutex);
    return ++m_propertyUses[name];
}

int CameraManager::decrementPropertyUse(const QString& name)
{
    QMutexLocker lock(&m_mutex);
    int& uses = m_propertyUses[name];
    uses = std::max(0, uses - 1);
    return uses;
}
