#include "SimNode.h"

#include "ListenerLink.h"
#include "SimCameraState.h"
#include "SimDevice.h"
#include "SimWorld.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Clock.h"
#include "Zerlane/Utils/HMLogger.h"

#include <algorithm>
#include <functional>

namespace Zerlane::sim {

SimNode::SimNode(Identity identity, std::vector<PropertyDeclaration> properties,
                 std::shared_ptr<SimCameraState> camera, std::weak_ptr<SimDevice> device,
                 std::shared_ptr<ListenerLink> link)
    : m_properties(std::move(properties)), m_identity(std::move(identity)), m_camera(std::move(camera)),
      m_device(std::move(device)), m_link(std::move(link))
{
}

SimNode::~SimNode()
{
    stop();
}

std::string SimNode::serialNumber() const
{
    return m_camera->serial;
}

bool SimNode::controlledByAnotherClient() const
{
    return m_camera->controlledByAnotherClient.load();
}

uint32_t SimNode::seed() const
{
    const uint32_t serialHash = uint32_t(std::hash<std::string>{}(m_camera->serial));
    return (SimWorld::instance().seed() * 0x9e3779b9u) ^ serialHash ^ (uint32_t(m_identity.kind) * 0x85ebca6bu);
}

std::optional<PropertyValue> SimNode::measuredProperty(const std::string&) const
{
    return std::nullopt;
}

void SimNode::configurationChanged(const PropertyValue&, const PropertyValue&) {}

void SimNode::reportMeasuredValues() {}

PropertyValue SimNode::getProperty(const std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    if (std::optional<PropertyValue> measured = measuredProperty(name))
        return *measured;
    return m_properties.get(name);
}

void SimNode::setProperty(const std::string& name, const PropertyValue& value)
{
    // The library reports this write itself; only dependent values are reported from here.
    if (name == "configuration") {
        applyConfiguration(value, false);
        return;
    }
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    m_properties.set(name, value);
}

PropertyValue SimNode::configuration() const
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    return m_properties.get("configuration");
}

void SimNode::setConfiguration(const PropertyValue& configuration)
{
    applyConfiguration(configuration, true);
}

void SimNode::applyConfiguration(const PropertyValue& configuration, bool reportConfiguration)
{
    checkOffered(configuration);
    PropertyValue before;
    {
        std::lock_guard<std::mutex> lock(m_settingsMutex);
        before = m_properties.get("configuration");
        m_properties.store("configuration", configuration);
    }
    if (reportConfiguration)
        reportPropertyChanged("configuration");
    configurationChanged(before, configuration);
}

void SimNode::reportPropertyChanged(const std::string& name)
{
    const std::shared_ptr<SimDevice> owner = device();
    if (!owner)
        return;
    m_link->notify([&](plugin::DriverListener& listener) { listener.propertyChanged(owner.get(), this, name); });
}

void SimNode::start(plugin::SampleSink* sink)
{
    if (!sink)
        throw ArgumentException("a node needs a sample sink to stream into");
    std::lock_guard<std::mutex> lifecycle(m_lifecycleMutex);
    {
        std::lock_guard<std::mutex> production(m_productionMutex);
        if (m_sink == sink)
            return;
    }
    if (m_thread.joinable()) {
        // Started before with another sink: restart cleanly.
        {
            std::lock_guard<std::mutex> lock(m_threadMutex);
            m_stopRequested = true;
        }
        m_wake.notify_all();
        m_thread.join();
    }
    {
        std::lock_guard<std::mutex> production(m_productionMutex);
        m_sink = sink;
    }
    {
        std::lock_guard<std::mutex> lock(m_threadMutex);
        m_stopRequested = false;
    }
    m_thread = std::thread(&SimNode::streamLoop, this);
}

void SimNode::stop()
{
    std::lock_guard<std::mutex> lifecycle(m_lifecycleMutex);
    {
        std::lock_guard<std::mutex> lock(m_threadMutex);
        m_stopRequested = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable()) {
        if (m_thread.get_id() == std::this_thread::get_id())
            m_thread.detach(); // stopped from inside the sink: the loop ends on its own
        else
            m_thread.join();
    }
    std::lock_guard<std::mutex> production(m_productionMutex);
    m_sink = nullptr;
}

bool SimNode::isStarted() const
{
    std::lock_guard<std::mutex> production(m_productionMutex);
    return m_sink != nullptr;
}

uint64_t SimNode::nextCaptureTime()
{
    // Strictly increasing, even for samples stepped within the same microsecond.
    m_lastCaptureTime = std::max(Utils::Clock::now(), m_lastCaptureTime + 1);
    return m_lastCaptureTime;
}

void SimNode::produceSteppedSample()
{
    std::lock_guard<std::mutex> production(m_productionMutex);
    if (m_sink)
        produceSample(*m_sink, nextCaptureTime());
}

void SimNode::waitForProduction()
{
    std::lock_guard<std::mutex> production(m_productionMutex);
}

void SimNode::streamLoop()
{
    using Clock = std::chrono::steady_clock;
    Clock::time_point next = Clock::now();
    Clock::time_point nextReport = next + std::chrono::seconds(1);
    for (;;) {
        const Clock::duration period = samplePeriod();
        next += period;
        const Clock::time_point now = Clock::now();
        if (now > next + period)
            next = now; // fell far behind (a slow machine or a debugger): do not burst
        {
            std::unique_lock<std::mutex> lock(m_threadMutex);
            if (m_wake.wait_until(lock, next, [this] { return m_stopRequested; }))
                return;
        }
        produceClockedSample();
        if (Clock::now() >= nextReport && !SimWorld::instance().stepped()) {
            nextReport = Clock::now() + std::chrono::seconds(1);
            reportMeasuredValues();
        }
    }
}

void SimNode::produceClockedSample()
{
    std::lock_guard<std::mutex> production(m_productionMutex);
    if (!m_sink || SimWorld::instance().stepped())
        return;
    {
        std::lock_guard<std::mutex> lock(m_threadMutex);
        if (m_stopRequested)
            return;
    }
    try {
        produceSample(*m_sink, nextCaptureTime());
    } catch (const std::exception& e) {
        // A failing sample must not end the process; the next period tries again.
        Utils::HMLogger* log = Utils::HMLogger::instance();
        log->warning(std::string("simulated camera ") + m_camera->serial + ": sample lost: " + e.what());
        log->release();
    }
}

} // namespace Zerlane::sim
