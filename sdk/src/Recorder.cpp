#include "Zerlane/Recorder.h"

#include "RecordingWriter.h"

#include "Zerlane/AudioNode.h"
#include "Zerlane/ColorNode.h"
#include "Zerlane/DepthNode.h"
#include "Zerlane/Exceptions.h"
#include "Zerlane/Interface.h"
#include "Zerlane/Type.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <variant>

namespace Zerlane {

namespace {

std::vector<recording::RecordedDevice::Property> describeProperties(const Interface& iface)
{
    std::vector<recording::RecordedDevice::Property> properties;
    for (const PropertyBase& property : iface.getType().getAllProperties()) {
        recording::RecordedDevice::Property recorded;
        recorded.spec.name = property.name();
        recorded.spec.type = property.type();
        recorded.spec.readOnly = property.isReadOnly();
        recorded.spec.hidden = property.isHidden();
        // Writable here without control: a per-client delivery option.
        recorded.spec.requiresControl = recorded.spec.readOnly || property.isReadOnly(iface);
        try {
            recorded.value = property.getValue(iface, property.type());
        } catch (const Exception&) {
            continue; // a value that cannot be read now is not part of the recording
        }
        properties.push_back(std::move(recorded));
    }
    return properties;
}

template <class Kind>
void describeConfigurations(const Kind& node, recording::RecordedDevice::Node& recorded)
{
    for (const auto& configuration : node.getConfigurations())
        recorded.configurations.emplace_back(configuration);
    recorded.configuration = node.getConfiguration();
}

recording::RecordedDevice describe(const Device& device)
{
    recording::RecordedDevice recorded;
    recorded.model = device.getModel();
    recorded.typeName = device.getType().name();
    recorded.serial = device.getSerialNumber();
    recorded.usbBackendVersion = device.getUsbBackendVersion();
    recorded.tofControllerVersion = device.getTofControllerVersion();
    recorded.properties = describeProperties(Interface(device));
    for (const Node& node : device.getNodes()) {
        recording::RecordedDevice::Node n;
        n.kind = node.is<DepthNode>() ? NodeKind::Depth
                 : node.is<ColorNode>() ? NodeKind::Color
                 : node.is<AudioNode>() ? NodeKind::Audio
                                        : NodeKind::Unsupported;
        if (n.kind == NodeKind::Unsupported)
            continue;
        n.typeName = node.getType().name();
        n.serial = node.getSerialNumber();
        n.vid = node.getVID();
        n.pid = node.getPID();
        n.revision = node.getRevision();
        n.mediaInterface = node.getMediaInterface();
        n.properties = describeProperties(Interface(node));
        if (n.kind == NodeKind::Depth) {
            describeConfigurations(DepthNode(node), n);
            n.range = DepthNode(node).getRange();
        } else if (n.kind == NodeKind::Color) {
            describeConfigurations(ColorNode(node), n);
        } else {
            describeConfigurations(AudioNode(node), n);
        }
        recorded.nodes.push_back(std::move(n));
    }
    return recorded;
}

} // namespace

class Recorder::Impl {
public:
    using Sample = std::variant<DepthNode::NewSampleReceivedData, ColorNode::NewSampleReceivedData,
                                AudioNode::NewSampleReceivedData>;
    struct Queued {
        int device = 0;
        int node = 0;
        Sample sample;
    };
    // One connection to a node's sample event, with the indices the file knows the node by.
    template <class Kind>
    class Tap : public EventHandler<Kind, typename Kind::NewSampleReceivedData> {
    public:
        Tap(Impl* impl, Kind node, int device, int index) : m_impl(impl), m_node(node), m_device(device), m_index(index) {}
        void handle(Kind, typename Kind::NewSampleReceivedData data) override
        {
            m_impl->enqueue({m_device, m_index, std::move(data)});
        }
        void connect() { m_node.newSampleReceivedEvent().connect(this); }
        void disconnect() { m_node.newSampleReceivedEvent().disconnect(this); }

    private:
        Impl* m_impl;
        Kind m_node;
        int m_device;
        int m_index;
    };
    struct AnyTap {
        std::function<void()> connect, disconnect;
        std::shared_ptr<void> owner;
    };

    // More than this many samples waiting: the disk does not keep up; drop instead of growing memory.
    static constexpr size_t MaxQueued = 90;

    void enqueue(Queued&& queued)
    {
        {
            std::lock_guard<std::mutex> lock(mutex);
            if (queue.size() >= MaxQueued) {
                ++progress.dropped;
                return;
            }
            queue.push_back(std::move(queued));
        }
        wake.notify_one();
    }

    void writeLoop()
    {
        for (;;) {
            Queued queued;
            {
                std::unique_lock<std::mutex> lock(mutex);
                wake.wait(lock, [this] { return stopping || !queue.empty(); });
                if (queue.empty())
                    return;
                queued = std::move(queue.front());
                queue.pop_front();
            }
            try {
                uint64_t time = 0;
                const bool written = std::visit(
                    [&](const auto& sample) {
                        time = sample.timeOfCapture;
                        using T = std::decay_t<decltype(sample)>;
                        if constexpr (std::is_same_v<T, DepthNode::NewSampleReceivedData>)
                            return writer->writeDepth(queued.device, queued.node, sample);
                        else if constexpr (std::is_same_v<T, ColorNode::NewSampleReceivedData>)
                            return writer->writeColor(queued.device, queued.node, sample);
                        else
                            return writer->writeAudio(queued.device, queued.node, sample);
                    },
                    queued.sample);
                std::lock_guard<std::mutex> lock(mutex);
                if (written) {
                    ++progress.samples;
                    if (!firstTime)
                        firstTime = time;
                    lastTime = std::max(lastTime, time);
                    progress.duration = lastTime - firstTime;
                } else {
                    ++progress.refused;
                }
                progress.bytes = writer->bytesWritten();
            } catch (const Exception& e) {
                std::lock_guard<std::mutex> lock(mutex);
                failure = e.what();
                stopping = true;
                queue.clear();
                return;
            }
        }
    }

    std::vector<Device> devices;
    std::unique_ptr<recording::RecordingWriter> writer;
    std::vector<AnyTap> taps;
    mutable std::mutex mutex;
    std::condition_variable wake;
    std::deque<Queued> queue;
    bool stopping = false;
    bool started = false;
    std::string failure;
    Progress progress;
    uint64_t firstTime = 0, lastTime = 0;
    std::thread thread;
};

Recorder::Recorder(const std::string& file, const std::vector<Device>& devices) : m_impl(std::make_unique<Impl>())
{
    std::vector<recording::RecordedDevice> described;
    for (const Device& device : devices)
        described.push_back(describe(device));
    m_impl->devices = devices;
    m_impl->writer = std::make_unique<recording::RecordingWriter>(file, std::move(described));
}

Recorder::~Recorder()
{
    try {
        stop();
    } catch (const Exception&) {
        // stop() reports failures to callers that ask; a destructor cannot
    }
}

void Recorder::start()
{
    if (m_impl->started)
        return;
    m_impl->started = true;
    m_impl->thread = std::thread([impl = m_impl.get()] { impl->writeLoop(); });
    for (size_t d = 0; d < m_impl->devices.size(); ++d) {
        int index = 0;
        for (const Node& node : m_impl->devices[d].getNodes()) {
            Impl::AnyTap tap;
            auto make = [&](auto kind) {
                using Kind = decltype(kind);
                auto handler = std::make_shared<Impl::Tap<Kind>>(m_impl.get(), kind, int(d), index);
                tap.connect = [handler] { handler->connect(); };
                tap.disconnect = [handler] { handler->disconnect(); };
                tap.owner = handler;
            };
            if (node.is<DepthNode>())
                make(DepthNode(node));
            else if (node.is<ColorNode>())
                make(ColorNode(node));
            else if (node.is<AudioNode>())
                make(AudioNode(node));
            else
                continue; // unsupported nodes are not recorded and have no index in the file
            ++index;
            tap.connect();
            m_impl->taps.push_back(std::move(tap));
        }
    }
}

void Recorder::stop()
{
    for (const Impl::AnyTap& tap : m_impl->taps)
        tap.disconnect();
    m_impl->taps.clear();
    {
        std::lock_guard<std::mutex> lock(m_impl->mutex);
        m_impl->stopping = true;
    }
    m_impl->wake.notify_all();
    if (m_impl->thread.joinable())
        m_impl->thread.join();
    if (m_impl->writer) {
        auto writer = std::move(m_impl->writer);
        writer->finish();
    }
    if (!m_impl->failure.empty()) {
        const std::string failure = m_impl->failure;
        m_impl->failure.clear();
        throw Exception(failure);
    }
}

Recorder::Progress Recorder::progress() const
{
    std::lock_guard<std::mutex> lock(m_impl->mutex);
    return m_impl->progress;
}

} // namespace Zerlane
