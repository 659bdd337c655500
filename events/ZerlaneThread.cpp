#include "events/ZerlaneThread.h"

#include "app/shared/ViewerLog.h"
#include "camera/BufferData.h"
#include "camera/DepthNodeData.h"
#include "camera/DeviceData.h"
#include "events/CameraManager.h"
#include "events/SampleIntake.h"
#include "palettes/DepthPalette.h"

#include <QCoreApplication>
#include <QMutexLocker>

#include <algorithm>
#include <mutex>

namespace {

template <class Sample>
void stampSlot(BufferData* buffer, int slot, const Sample& sample, quint64 eventTime)
{
    buffer->timeOfArrival[slot] = sample.timeOfArrival;
    buffer->timeOfCapture[slot] = sample.timeOfCapture;
    buffer->timeOfEvent[slot] = eventTime;
    buffer->droppedFrames[slot] = uint32_t(sample.droppedSampleCount);
    buffer->totalDroppedFrames[slot] = uint32_t(sample.droppedSampleTotalCount);
}

} // namespace

ZerlaneThread::ZerlaneThread()
    : m_clientConnectedHandler(this, &ZerlaneThread::onClientConnected)
    , m_clientDisconnectedHandler(this, &ZerlaneThread::onClientDisconnected)
    , m_deviceAddedHandler(this, &ZerlaneThread::onDeviceAdded)
    , m_deviceRemovedHandler(this, &ZerlaneThread::onDeviceRemoved)
    , m_nodeAddedHandler(this, &ZerlaneThread::onNodeAdded)
    , m_nodeRemovedHandler(this, &ZerlaneThread::onNodeRemoved)
    , m_devicePropertyHandler(this, &ZerlaneThread::onDevicePropertyChanged)
    , m_nodePropertyHandler(this, &ZerlaneThread::onNodePropertyChanged)
    , m_depthSampleHandler(this, &ZerlaneThread::onDepthSample)
    , m_colorSampleHandler(this, &ZerlaneThread::onColorSample)
    , m_audioSampleHandler(this, &ZerlaneThread::onAudioSample)
{
}

ZerlaneThread::~ZerlaneThread()
{
    wait();
    const std::lock_guard handedBack(m_runLock);
}

// ---- Run ---------------------------------------------------------------------------------------

void ZerlaneThread::run()
{
    const std::lock_guard owned(m_runLock);
    m_manager = CameraManager::instance();
    m_context = m_manager->context();
    try {
        runServiceLoop();
    } catch (const Zerlane::TransportException&) {
        m_running = false;
        emit popup(3, "Zerlane Server was shut down unexpectedly");
    } catch (const Zerlane::Exception& e) {
        m_running = false;
        emit popup(3, QString("Context exception : %1").arg(QString::fromStdString(e.getMessage())));
    }
    m_running = false;
    finishRun();
    m_context = Zerlane::Context();
}

void ZerlaneThread::runServiceLoop()
{
    m_context.clientConnectedEvent().connect(&m_clientConnectedHandler);
    m_context.clientDisconnectedEvent().connect(&m_clientDisconnectedHandler);
    m_context.deviceAddedEvent().connect(&m_deviceAddedHandler);
    m_context.deviceRemovedEvent().connect(&m_deviceRemovedHandler);

    const std::vector<Zerlane::Device> devices = m_context.getDevices();
    for (const Zerlane::Device& device : devices)
        bindDeviceEvents(device, true);
    for (const Zerlane::Device& device : devices) {
        emit deviceConnected(device);
        for (const Zerlane::Node& node : device.getNodes()) {
            bindNodeProperties(node);
            emit nodeConnected(device, node);
        }
    }

    m_running = true;
    m_context.run();
    m_running = false;

    if (m_manager->streamingState() != CameraManager::Stopped)
        m_context.stopNodes();
}

void ZerlaneThread::finishRun()
{
    QMutexLocker lock(&m_mutex);
    if (m_quitOnExit) {
        m_quitOnExit = false;
        emit quitQApplication();
    }
}

void ZerlaneThread::on_aboutToQuitApplication()
{
    QMutexLocker lock(&m_mutex);
    if (!m_quitOnExit)
        return;
    m_quitOnExit = false;
    if (CameraManager* manager = CameraManager::existingInstance()) {
        Zerlane::Context context = manager->context();
        for (;;) {
            try {
                context.quit();
                break;
            } catch (const Zerlane::InvalidOperationException&) {
                QThread::msleep(100);
            } catch (const Zerlane::Exception&) {
                break;
            }
        }
    }
    // A blocking pop-up from the loop must still be served while it winds down.
    while (m_running)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
}

// ---- Bindings ------------------------------------------------------------------------------------

void ZerlaneThread::bindDeviceEvents(Zerlane::Device device, bool withPropertyEvents)
{
    device.nodeAddedEvent().connect(&m_nodeAddedHandler);
    device.nodeRemovedEvent().connect(&m_nodeRemovedHandler);
    if (withPropertyEvents)
        device.propertyChangedEvent().connect(&m_devicePropertyHandler);
}

void ZerlaneThread::bindNodeProperties(Zerlane::Node node)
{
    node.propertyChangedEvent().connect(&m_nodePropertyHandler);
}

void ZerlaneThread::bindSamples(NodeData* node)
{
    if (node->node.is<Zerlane::DepthNode>())
        Zerlane::DepthNode(node->node).newSampleReceivedEvent().connect(&m_depthSampleHandler);
    else if (node->node.is<Zerlane::ColorNode>())
        Zerlane::ColorNode(node->node).newSampleReceivedEvent().connect(&m_colorSampleHandler);
    else if (node->node.is<Zerlane::AudioNode>())
        Zerlane::AudioNode(node->node).newSampleReceivedEvent().connect(&m_audioSampleHandler);
}

void ZerlaneThread::unbindSamples(NodeData* node)
{
    if (node->node.is<Zerlane::DepthNode>())
        Zerlane::DepthNode(node->node).newSampleReceivedEvent().disconnect(&m_depthSampleHandler);
    else if (node->node.is<Zerlane::ColorNode>())
        Zerlane::ColorNode(node->node).newSampleReceivedEvent().disconnect(&m_colorSampleHandler);
    else if (node->node.is<Zerlane::AudioNode>())
        Zerlane::AudioNode(node->node).newSampleReceivedEvent().disconnect(&m_audioSampleHandler);
}

// ---- Service events ------------------------------------------------------------------------------

void ZerlaneThread::reportClient(const char* format, const Zerlane::Context::ClientData_p& client)
{
    const QString text = QString(format)
                             .arg(QString::fromStdString(client.name))
                             .arg(client.pid)
                             .arg(QString::fromStdString(client.address))
                             .arg(client.port);
    ViewerLog::info(text.toStdString());
    emit setStatusMessage(text, 5000);
}

void ZerlaneThread::onClientConnected(Zerlane::Context, Zerlane::Context::ClientData_p data)
{
    reportClient("%1 (PID=%2) connected from %3:%4", data);
}

void ZerlaneThread::onClientDisconnected(Zerlane::Context, Zerlane::Context::ClientData_p data)
{
    reportClient("%1 (PID=%2) disconnected from server (Old address : %3:%4)", data);
}

void ZerlaneThread::onDeviceAdded(Zerlane::Context, Zerlane::Context::DeviceAddedData data)
{
    bindDeviceEvents(data.device, false);
    emit deviceConnected(data.device);
}

void ZerlaneThread::onDeviceRemoved(Zerlane::Context, Zerlane::Context::DeviceRemovedData data)
{
    emit deviceDisconnected(data.device);
}

void ZerlaneThread::onNodeAdded(Zerlane::Device device, Zerlane::Device::NodeAddedData data)
{
    bindNodeProperties(data.node);
    emit nodeConnected(device, data.node);
}

void ZerlaneThread::onNodeRemoved(Zerlane::Device, Zerlane::Device::NodeRemovedData data)
{
    emit nodeDisconnected(data.node);
}

void ZerlaneThread::onDevicePropertyChanged(Zerlane::Device device, Zerlane::PropertyChangedData data)
{
    emit propertyChanged(device, data.property);
}

void ZerlaneThread::onNodePropertyChanged(Zerlane::Node node, Zerlane::PropertyChangedData data)
{
    // The depth colouring reads the range on this thread: keep it current here.
    if (data.property.isSet() && data.property.name() == "range" && node.is<Zerlane::DepthNode>()) {
        if (auto* record = static_cast<DepthNodeData*>(m_manager ? m_manager->findNode(node) : nullptr)) {
            try {
                record->setRange(Zerlane::DepthNode(node).getRange());
            } catch (const Zerlane::Exception&) {
                // keep the last known range; the panel reports the read failure
            }
        }
    }
    emit propertyChanged(node, data.property);
}

// ---- Samples -------------------------------------------------------------------------------------

ZerlaneThread::HeldNode ZerlaneThread::takeSample(const Zerlane::Node& node, quint64 timeOfCapture,
                                                  quint64 timeOfArrival, quint64* eventTime)
{
    if (!m_manager) // handlers called outside the service loop (benchmarks) find the manager themselves
        m_manager = CameraManager::instance();
    HeldNode record;
    {
        const std::lock_guard lock(m_manager->mutex());
        record.reset(m_manager->findNode(node));
        if (!record)
            return record;
        record->addRef();
    }
    ++record->sampleCount;
    if (m_manager->streamingState() != CameraManager::Streaming)
        return nullptr;
    long now = 0;
    Zerlane::Utils::Clock::getTime(now);
    *eventTime = quint64(now);
    if (m_resetReferenceTime.exchange(false))
        m_manager->setReferenceTime(std::min(timeOfCapture, timeOfArrival));
    record->dataReceived = true;
    return record;
}

void ZerlaneThread::logRefusedFrame(const Zerlane::Node& node, const std::string& reason)
{
    // Once per node: a device that keeps sending such frames would otherwise flood the log.
    if (!m_refusedNodes.insert(node).second)
        return;
    const std::string serial = [&node]() -> std::string {
        try {
            return node.getSerialNumber();
        } catch (const Zerlane::Exception&) {
            return "?";
        }
    }();
    ViewerLog::warning("Frames of node " + serial + " are refused: " + reason);
}

template <class Sample, class Fill>
void ZerlaneThread::deliver(NodeData* record, const Sample& sample, quint64 eventTime, SlotFlip flip, Fill fill)
{
    if (flip == SlotFlip::Together) {
        m_manager->lockBuffers();
        for (BufferData* buffer : record->buffers)
            buffer->flipWriteSlot();
        m_manager->unlockBuffers();
    }
    for (BufferData* buffer : record->buffers) {
        const int slot = flip == SlotFlip::Together ? buffer->writeSlot : buffer->flipWriteSlot();
        stampSlot(buffer, slot, sample, eventTime);
        if (fill(buffer, slot))
            emit newFrame(buffer);
    }
}

void ZerlaneThread::onDepthSample(Zerlane::DepthNode node, Zerlane::DepthNode::NewSampleReceivedData sample)
{
    quint64 eventTime = 0;
    const HeldNode record = takeSample(node, sample.timeOfCapture, sample.timeOfArrival, &eventTime);
    if (!record)
        return;
    auto* depth = static_cast<DepthNodeData*>(record.get());
    depth->setAcceleration(sample.acceleration);
    // The palette and preferences of this frame: a change made meanwhile applies from the next one.
    const std::shared_ptr<const DepthPalette> palette = m_manager->palette();
    SampleIntake::DepthFrame frame;
    frame.node = depth;
    Zerlane::FrameFormat_toResolution(sample.captureConfiguration.frameFormat, &frame.width, &frame.height);
    frame.palette = palette.get();
    frame.range = depth->range();
    frame.sdNumFrames = m_manager->displayPreferences().sdNumFrames;
    std::string reason;
    const bool fits = SampleIntake::depthFrameFits(sample, frame.width, frame.height, &reason);
    if (!fits)
        logRefusedFrame(node, reason);
    deliver(depth, sample, eventTime, SlotFlip::Together, [&](BufferData* buffer, int slot) {
        if (fits)
            SampleIntake::fillDepthBuffer(buffer, slot, sample, frame);
        else
            SampleIntake::refuseFrame(buffer, slot);
        return true;
    });
}

void ZerlaneThread::onColorSample(Zerlane::ColorNode node, Zerlane::ColorNode::NewSampleReceivedData sample)
{
    quint64 eventTime = 0;
    const HeldNode record = takeSample(node, sample.timeOfCapture, sample.timeOfArrival, &eventTime);
    if (!record)
        return;
    int32_t width = 0, height = 0;
    Zerlane::FrameFormat_toResolution(sample.captureConfiguration.frameFormat, &width, &height);
    std::string reason;
    const bool fits = SampleIntake::colorFrameFits(sample, width, height, &reason);
    if (!fits)
        logRefusedFrame(node, reason);
    deliver(record.get(), sample, eventTime, SlotFlip::EachBuffer, [&](BufferData* buffer, int slot) {
        if (fits)
            SampleIntake::fillColorBuffer(buffer, slot, sample, width, height);
        else
            SampleIntake::refuseFrame(buffer, slot);
        return true;
    });
}

void ZerlaneThread::onAudioSample(Zerlane::AudioNode node, Zerlane::AudioNode::NewSampleReceivedData sample)
{
    quint64 eventTime = 0;
    const HeldNode record = takeSample(node, sample.timeOfCapture, sample.timeOfArrival, &eventTime);
    if (!record)
        return;
    const Zerlane::AudioNode::Configuration configuration = m_manager->audioConfiguration(record.get());
    deliver(record.get(), sample, eventTime, SlotFlip::EachBuffer, [&](BufferData* buffer, int slot) {
        return SampleIntake::fillAudioBuffer(buffer, slot, sample, configuration);
    });
}
