#include "PlaybackDevice.h"

#include "RecordingReader.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Clock.h"
#include "Zerlane/Utils/HMLogger.h"

#include <algorithm>

namespace Zerlane::playback {

namespace {

void logError(const std::string& message)
{
    Utils::HMLogger* logger = Utils::HMLogger::instance();
    logger->error(message);
    logger->release();
}

uint64_t clockNow()
{
    long now = 0;
    Utils::Clock::getTime(now);
    return uint64_t(now);
}

// The period of the node's configuration: how long the last sample of a pass lasts before the next pass.
uint64_t periodOf(const PropertyValue& configuration)
{
    int32_t rate = 0;
    if (const auto* depth = std::get_if<DepthNodeConfiguration>(&configuration))
        rate = depth->frameRate;
    else if (const auto* color = std::get_if<ColorNodeConfiguration>(&configuration))
        rate = color->frameRate;
    return rate > 0 ? uint64_t(1000000 / rate) : 33333;
}

} // namespace

PlaybackDevice::PlaybackDevice(std::string file, int index, const recording::RecordedDevice& recorded)
    : m_file(std::move(file)), m_index(index), m_recorded(recorded),
      m_values(recorded.typeName, recorded.properties, "the recorded camera " + recorded.serial)
{
    for (const recording::RecordedDevice::Node& node : recorded.nodes)
        m_nodes.push_back(std::make_shared<PlaybackNode>(node, [this](bool) { streamingChanged(); }));
}

PlaybackDevice::~PlaybackDevice()
{
    for (const auto& node : m_nodes)
        node->detach();
    streamingChanged(); // no node is started now: the thread ends
}

PropertyValue PlaybackDevice::getProperty(const std::string& name) const
{
    return m_values.get(name);
}

void PlaybackDevice::setProperty(const std::string& name, const PropertyValue& value)
{
    m_values.set(name, value);
}

std::vector<std::shared_ptr<plugin::NodeDriver>> PlaybackDevice::nodes() const
{
    return {m_nodes.begin(), m_nodes.end()};
}

void PlaybackDevice::streamingChanged()
{
    const bool any = std::any_of(m_nodes.begin(), m_nodes.end(), [](const auto& node) { return node->isStarted(); });
    std::lock_guard<std::mutex> lock(m_threadMutex);
    if (any && !m_thread.joinable()) {
        m_stopRequested = false;
        m_thread = std::thread([this] { play(); });
    } else if (!any && m_thread.joinable()) {
        {
            std::lock_guard<std::mutex> wake(m_wakeMutex);
            m_stopRequested = true;
        }
        m_wake.notify_all();
        if (m_thread.get_id() != std::this_thread::get_id())
            m_thread.join();
        else
            m_thread.detach();
    }
}

bool PlaybackDevice::waitUntil(std::chrono::steady_clock::time_point when)
{
    std::unique_lock<std::mutex> lock(m_wakeMutex);
    m_wake.wait_until(lock, when, [this] { return m_stopRequested; });
    return !m_stopRequested;
}

void PlaybackDevice::play()
{
    try {
        recording::RecordingReader reader(m_file);
        recording::RecordingReader::Sample sample;
        const auto wallStart = std::chrono::steady_clock::now();
        const uint64_t clockStart = clockNow();
        bool first = true;
        uint64_t fileStart = 0, last = 0, passOffset = 0, period = 33333;
        // Capture times are moved to the present: clockStart + offset.
        for (;;) {
            if (!reader.next(sample)) {
                if (first)
                    throw Exception(m_file + ": the recording holds no sample");
                // Start over: the next pass begins one frame period after the last sample.
                passOffset += last - fileStart + period;
                reader.rewind();
                continue;
            }
            if (sample.device != m_index || size_t(sample.node) >= m_nodes.size())
                continue;
            if (first) {
                first = false;
                fileStart = sample.timeOfCapture;
            }
            // Nodes stamp their samples differently (audio as the start of its block), so a sample may be
            // earlier than the first one of the file: it is due at once, with its time kept.
            const int64_t offset = int64_t(passOffset) + int64_t(sample.timeOfCapture - fileStart);
            last = std::max(last, sample.timeOfCapture);
            period = periodOf(m_nodes[size_t(sample.node)]->configuration());
            if (!waitUntil(wallStart + std::chrono::microseconds(std::max<int64_t>(0, offset))))
                return;
            PlaybackNode& node = *m_nodes[size_t(sample.node)];
            switch (sample.kind) {
            case NodeKind::Depth:
                sample.depth.timeOfCapture = uint64_t(int64_t(clockStart) + offset);
                node.deliver(std::move(sample.depth));
                break;
            case NodeKind::Color:
                sample.color.timeOfCapture = uint64_t(int64_t(clockStart) + offset);
                node.deliver(std::move(sample.color));
                break;
            case NodeKind::Audio:
                sample.audio.timeOfCapture = uint64_t(int64_t(clockStart) + offset);
                node.deliver(std::move(sample.audio));
                break;
            default:
                break;
            }
            sample = {};
        }
    } catch (const std::exception& e) {
        logError(std::string("Playback of camera ") + m_recorded.serial + " stopped: " + e.what());
    }
}

} // namespace Zerlane::playback
