#include "events/ZerlaneThread.h"

#include "app/SingletonHolder.h"
#include "app/ViewerLog.h"
#include "app/YuvConverter.h"
#include "camera/AudioNodeData.h"
#include "camera/BufferData.h"
#include "camera/ColorNodeData.h"
#include "camera/DepthNodeData.h"
#include "camera/DeviceData.h"
#include "camera/StandardDeviationHistory.h"
#include "events/AudioWaveform.h"
#include "events/CameraManager.h"
#include "palettes/DepthColorizer.h"
#include "worker/Settings.h"

#include <QCoreApplication>
#include <QMutexLocker>

#include <algorithm>
#include <cstring>

namespace {

SingletonHolder<ZerlaneThread> holder;

// What one depth buffer is filled from: the map's bytes and, for the image, how to read them.
struct DepthSource {
    const void* data = nullptr;
    size_t bytes = 0;
    const void* aux = nullptr;
};

DepthSource depthSourceFor(uint32_t type, const Zerlane::DepthNode::NewSampleReceivedData& sample)
{
    switch (type) {
    case BufferData::Phase:
        return {sample.phaseMap.data(), size_t(sample.phaseMap.size()) * 2};
    case BufferData::Confidence:
        return {sample.confidenceMap.data(), size_t(sample.confidenceMap.size()) * 2};
    case BufferData::Depth:
        return {sample.depthMap.data(), size_t(sample.depthMap.size()) * 2};
    case BufferData::DepthFloatingPoint:
        return {sample.depthMapFloatingPoint.data(), size_t(sample.depthMapFloatingPoint.size()) * 4};
    case BufferData::Vertices:
        return {sample.vertices.data(), size_t(sample.vertices.size()) * 6};
    case BufferData::VerticesFloatingPoint:
        return {sample.verticesFloatingPoint.data(), size_t(sample.verticesFloatingPoint.size()) * 12};
    case BufferData::UV:
        return {sample.uvMap.data(), size_t(sample.uvMap.size()) * 8};
    case BufferData::Combined:
        return {sample.phaseMap.data(), size_t(sample.phaseMap.size()) * 2, sample.confidenceMap.data()};
    default:
        return {};
    }
}

// A map delivered as three planes (x, y, z) is shown flat by its z plane.
template <class T>
const T* flatPlane(const T* map, size_t elements, size_t pixels)
{
    return elements >= 3 * pixels ? map + 2 * pixels : map;
}

void colorDepthImage(BufferData* buffer, int slot, const DepthSource& source, size_t pixels, const DepthPalette& palette,
                     float range)
{
    auto* image = reinterpret_cast<uint32_t*>(buffer->image[slot].pixels);
    const int count = int(pixels);
    switch (buffer->type) {
    case BufferData::Phase:
    case BufferData::Confidence:
    case BufferData::Combined:
        DepthColorizer::colorize16(static_cast<const uint16_t*>(source.data), image, count, palette);
        break;
    case BufferData::Depth:
        DepthColorizer::colorizeDepth(flatPlane(static_cast<const int16_t*>(source.data), source.bytes / 2, pixels),
                                      image, count, palette, range);
        break;
    case BufferData::DepthFloatingPoint:
        DepthColorizer::colorizeDepthFloat(flatPlane(static_cast<const float*>(source.data), source.bytes / 4, pixels),
                                           image, count, palette, range);
        break;
    case BufferData::StandardDeviation:
        DepthColorizer::colorizeStandardDeviation(static_cast<const float*>(source.data), image, count, palette, range);
        break;
    default:
        return; // the geometry kinds have no image
    }
    buffer->image[slot].uploaded = false;
}

void resizeImageIfNeeded(BufferData* buffer, int slot, uint32_t width, uint32_t height)
{
    DisplayImage& image = buffer->image[slot];
    if (buffer->sizeChanged[slot] || image.width != width || image.height != height) {
        image.resize(width, height);
        buffer->sizeChanged[slot] = false;
    }
}

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

ZerlaneThread* ZerlaneThread::instance()
{
    return holder.instance([] { return new ZerlaneThread(); });
}

ZerlaneThread* ZerlaneThread::existingInstance()
{
    return holder.existing();
}

void ZerlaneThread::destroyInstance()
{
    holder.destroy();
}

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
}

// ---- Run ---------------------------------------------------------------------------------------

void ZerlaneThread::run()
{
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
                record->range = Zerlane::DepthNode(node).getRange();
            } catch (const Zerlane::Exception&) {
                // keep the last known range; the panel reports the read failure
            }
        }
    }
    emit propertyChanged(node, data.property);
}

// ---- Samples -------------------------------------------------------------------------------------

NodeData* ZerlaneThread::takeSample(const Zerlane::Node& node, quint64 timeOfCapture, quint64 timeOfArrival,
                                    quint64* eventTime)
{
    if (!m_manager) // handlers called outside the service loop (benchmarks) find the manager themselves
        m_manager = CameraManager::instance();
    NodeData* record = nullptr;
    {
        QMutexLocker lock(&m_manager->mutex());
        record = m_manager->findNode(node);
        if (!record)
            return nullptr;
        record->addRef(); // the GUI thread may drop the record while this sample is copied
    }
    ++record->sampleCount;
    if (m_manager->streamingState() != CameraManager::Streaming) {
        record->release();
        return nullptr;
    }
    long now = 0;
    Zerlane::Utils::Clock::getTime(now);
    *eventTime = quint64(now);
    if (m_resetReferenceTime.exchange(false))
        m_manager->setReferenceTime(std::min(timeOfCapture, timeOfArrival));
    record->dataReceived = true;
    return record;
}

void ZerlaneThread::onDepthSample(Zerlane::DepthNode node, Zerlane::DepthNode::NewSampleReceivedData sample)
{
    quint64 eventTime = 0;
    NodeData* record = takeSample(node, sample.timeOfCapture, sample.timeOfArrival, &eventTime);
    if (!record)
        return;
    auto* depth = static_cast<DepthNodeData*>(record);
    depth->acceleration = sample.acceleration;
    int32_t width = 0, height = 0;
    Zerlane::FrameFormat_toResolution(sample.captureConfiguration.frameFormat, &width, &height);

    // All buffers of the node move to their new slot together, so a reader holding the buffers lock
    // sees the maps of one sample.
    m_manager->lockBuffers();
    for (BufferData* buffer : record->buffers)
        buffer->flipWriteSlot();
    m_manager->unlockBuffers();

    const DepthPalette& palette = m_manager->palette();
    for (BufferData* buffer : record->buffers) {
        const int slot = buffer->writeSlot;
        const bool deviation = buffer->type == BufferData::StandardDeviation;
        const uint32_t w = deviation ? uint32_t(std::max(0, depth->roiWidth)) : uint32_t(width);
        const uint32_t h = deviation ? uint32_t(std::max(0, depth->roiHeight)) : uint32_t(height);
        stampSlot(buffer, slot, sample, eventTime);
        buffer->width[slot] = w;
        buffer->height[slot] = h;

        DepthSource source = depthSourceFor(buffer->type, sample);
        if (deviation && depth->roiX >= 0 && sample.depthMapFloatingPoint.data())
            source = {StandardDeviationHistory::addFrame(*depth, sample.depthMapFloatingPoint.data(), width, Settings::sdNumFrames()),
                      size_t(w) * h * 4};
        buffer->noData = source.data == nullptr;
        if (source.data && w > 0 && h > 0) {
            std::memcpy(buffer->data[slot], source.data, std::min<size_t>(source.bytes, BufferData::capacity(buffer->type)));
            buffer->auxData = source.aux;
            resizeImageIfNeeded(buffer, slot, w, h);
            colorDepthImage(buffer, slot, source, size_t(w) * h, palette, depth->range);
            ++buffer->frameCount;
        }
        emit newFrame(buffer);
    }
    record->release();
}

void ZerlaneThread::onColorSample(Zerlane::ColorNode node, Zerlane::ColorNode::NewSampleReceivedData sample)
{
    quint64 eventTime = 0;
    NodeData* record = takeSample(node, sample.timeOfCapture, sample.timeOfArrival, &eventTime);
    if (!record)
        return;
    int32_t width = 0, height = 0;
    Zerlane::FrameFormat_toResolution(sample.captureConfiguration.frameFormat, &width, &height);
    for (BufferData* buffer : record->buffers) {
        const int slot = buffer->flipWriteSlot();
        stampSlot(buffer, slot, sample, eventTime);
        buffer->width[slot] = uint32_t(width);
        buffer->height[slot] = uint32_t(height);
        buffer->noData = sample.colorMap.data() == nullptr;
        if (!buffer->noData && width > 0 && height > 0) {
            resizeImageIfNeeded(buffer, slot, uint32_t(width), uint32_t(height));
            uint8_t* pixels = buffer->image[slot].pixels;
            if (sample.captureConfiguration.compression == Zerlane::COMPRESSION_TYPE_NONE)
                YuvConverter::copyBgr(sample.colorMap.data(), pixels, width, height);
            else
                YuvConverter::yuy2ToBgr(sample.colorMap.data(), pixels, width, height);
            buffer->image[slot].uploaded = false;
            ++buffer->frameCount;
        }
        emit newFrame(buffer);
    }
    record->release();
}

void ZerlaneThread::onAudioSample(Zerlane::AudioNode node, Zerlane::AudioNode::NewSampleReceivedData sample)
{
    quint64 eventTime = 0;
    NodeData* record = takeSample(node, sample.timeOfCapture, sample.timeOfArrival, &eventTime);
    if (!record)
        return;
    const Zerlane::AudioNode::Configuration* configuration = static_cast<AudioNodeData*>(record)->currentConfiguration;
    for (BufferData* buffer : record->buffers) {
        const int slot = buffer->flipWriteSlot();
        stampSlot(buffer, slot, sample, eventTime);
        if (sample.audioData.size() > 0) {
            buffer->noData = sample.audioData.data() == nullptr;
            if (!buffer->noData && !AudioWaveform::drawSample(buffer, slot, sample, configuration))
                continue; // too short to cover one column: nothing new to show
        }
        emit newFrame(buffer);
    }
    record->release();
}
