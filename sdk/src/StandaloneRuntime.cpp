#include "StandaloneRuntime.h"

#include "DeviceImpl.h"
#include "NodeImpl.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Clock.h"
#include "Zerlane/Utils/Format.h"
#include "Zerlane/Utils/HMLogger.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <thread>

namespace Zerlane::detail {

namespace {

void logWarning(const std::string& message)
{
    Utils::HMLogger* logger = Utils::HMLogger::instance();
    logger->warning(message);
    logger->release();
}

// How often a control request looks again while another client holds control.
constexpr auto kControlPollInterval = std::chrono::milliseconds(10);

} // namespace

StandaloneRuntime::StandaloneRuntime() = default;

StandaloneRuntime::~StandaloneRuntime()
{
    closeDrivers();
}

void StandaloneRuntime::open(std::vector<std::unique_ptr<plugin::Driver>> drivers)
{
    m_drivers = std::move(drivers);
    m_opening = true;
    try {
        for (const auto& driver : m_drivers)
            driver->open(this);
    } catch (...) {
        m_opening = false;
        throw;
    }
    m_opening = false;
}

void StandaloneRuntime::closeDrivers()
{
    {
        std::lock_guard<std::mutex> lock(m_streamMutex);
        m_started = false;
        for (const std::shared_ptr<NodeImpl>& node : allNodes()) {
            if (node->isStreaming())
                stopNode(*node);
        }
    }
    for (const auto& driver : m_drivers) {
        try {
            driver->close();
        } catch (const std::exception& e) {
            logWarning(Utils::Format("closing the % driver failed: %") % driver->name() % e.what());
        }
    }
    std::vector<std::shared_ptr<DeviceImpl>> devices;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        devices.swap(m_devices);
        m_nodes.clear();
    }
    for (const std::shared_ptr<DeviceImpl>& device : devices) {
        for (const std::shared_ptr<NodeImpl>& node : device->takeAllNodes())
            node->markDisconnected();
        device->markDisconnected();
    }
}

std::shared_ptr<DeviceImpl> StandaloneRuntime::findDevice(const plugin::DeviceDriver* driver) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const std::shared_ptr<DeviceImpl>& device : m_devices) {
        if (device->driverKey() == driver)
            return device;
    }
    return nullptr;
}

std::shared_ptr<NodeImpl> StandaloneRuntime::findNode(const plugin::NodeDriver* driver) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_nodes.find(driver);
    return it == m_nodes.end() ? nullptr : it->second;
}

std::vector<std::shared_ptr<NodeImpl>> StandaloneRuntime::allNodes() const
{
    std::vector<std::shared_ptr<NodeImpl>> nodes;
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const std::shared_ptr<DeviceImpl>& device : m_devices) {
        for (std::shared_ptr<NodeImpl>& node : device->nodes())
            nodes.push_back(std::move(node));
    }
    return nodes;
}

std::shared_ptr<NodeImpl> StandaloneRuntime::makeNode(const std::shared_ptr<DeviceImpl>& device,
                                                      std::shared_ptr<plugin::NodeDriver> driver)
{
    return std::make_shared<NodeImpl>(weak_from_this(), this, device, std::move(driver));
}

std::vector<Device> StandaloneRuntime::devices() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<Device> result;
    result.reserve(m_devices.size());
    for (const std::shared_ptr<DeviceImpl>& device : m_devices)
        result.push_back(device->handle());
    return result;
}

void StandaloneRuntime::registerNode(NodeImpl& node)
{
    node.ensureConnected();
    std::lock_guard<std::mutex> lock(m_streamMutex);
    if (node.isRegistered())
        return;
    node.setRegistered(true);
    if (!m_started)
        return;
    try {
        startNode(node);
    } catch (...) {
        node.setRegistered(false);
        throw;
    }
}

void StandaloneRuntime::unregisterNode(NodeImpl& node)
{
    std::lock_guard<std::mutex> lock(m_streamMutex);
    node.setRegistered(false);
    if (node.isStreaming())
        stopNode(node);
}

void StandaloneRuntime::requestControl(InterfaceImpl& target, int32_t timeoutMs)
{
    target.ensureConnected();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(std::max(timeoutMs, 0));
    while (target.controlledByAnotherClient()) {
        if (std::chrono::steady_clock::now() >= deadline)
            throw TimeoutException("control of " + target.description() + " is held by another client");
        std::this_thread::sleep_for(kControlPollInterval);
    }
    target.setControlled(true);
}

void StandaloneRuntime::releaseControl(InterfaceImpl& target)
{
    target.setControlled(false);
}

void StandaloneRuntime::startNodes()
{
    std::lock_guard<std::mutex> lock(m_streamMutex);
    m_started = true;
    std::exception_ptr firstError;
    for (const std::shared_ptr<NodeImpl>& node : allNodes()) {
        if (!node->isRegistered() || node->isStreaming())
            continue;
        try {
            startNode(*node);
        } catch (...) {
            if (!firstError)
                firstError = std::current_exception();
        }
    }
    if (firstError)
        std::rethrow_exception(firstError);
}

void StandaloneRuntime::stopNodes()
{
    std::lock_guard<std::mutex> lock(m_streamMutex);
    m_started = false;
    for (const std::shared_ptr<NodeImpl>& node : allNodes()) {
        if (node->isStreaming())
            stopNode(*node);
    }
}

void StandaloneRuntime::startNode(NodeImpl& node)
{
    // Accept samples before the driver starts: the first may arrive before start() returns.
    node.setStreaming(true);
    try {
        node.driver().start(this);
    } catch (...) {
        node.setStreaming(false);
        throw;
    }
}

void StandaloneRuntime::stopNode(NodeImpl& node)
{
    node.setStreaming(false);
    try {
        node.lastDriver().stop(); // also when the node is gone: the plug-in may still be producing
    } catch (const std::exception& e) {
        logWarning(Utils::Format("stopping % failed: %") % node.description() % e.what());
    }
    node.samples().clear();
}

void StandaloneRuntime::retireNode(NodeImpl& node)
{
    {
        std::lock_guard<std::mutex> lock(m_streamMutex);
        node.setRegistered(false);
        if (node.isStreaming())
            stopNode(node);
    }
    node.markDisconnected();
}

void StandaloneRuntime::deviceAdded(const std::shared_ptr<plugin::DeviceDriver>& driver)
{
    if (!driver || findDevice(driver.get()))
        return;
    auto device = std::make_shared<DeviceImpl>(weak_from_this(), this, driver);
    std::vector<std::shared_ptr<NodeImpl>> nodes;
    for (std::shared_ptr<plugin::NodeDriver>& nodeDriver : driver->nodes()) {
        if (nodeDriver)
            nodes.push_back(makeNode(device, std::move(nodeDriver)));
    }
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (const std::shared_ptr<NodeImpl>& node : nodes) {
            device->addNode(node);
            m_nodes[node->driverKey()] = node;
        }
        m_devices.push_back(device);
    }
    if (m_opening)
        return; // present from the start: listed by getDevices(), not announced
    postDeviceAdded(device);
    for (const std::shared_ptr<NodeImpl>& node : nodes)
        postNodeAdded(node);
}

void StandaloneRuntime::deviceRemoved(const std::shared_ptr<plugin::DeviceDriver>& driver)
{
    std::shared_ptr<DeviceImpl> device;
    std::vector<std::shared_ptr<NodeImpl>> nodes;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = std::find_if(m_devices.begin(), m_devices.end(),
                               [&](const std::shared_ptr<DeviceImpl>& d) { return d->driverKey() == driver.get(); });
        if (it == m_devices.end())
            return;
        device = *it;
        m_devices.erase(it);
        nodes = device->takeAllNodes();
        for (const std::shared_ptr<NodeImpl>& node : nodes)
            m_nodes.erase(node->driverKey());
    }
    for (const std::shared_ptr<NodeImpl>& node : nodes) {
        retireNode(*node);
        postNodeRemoved(node);
    }
    device->markDisconnected();
    postDeviceRemoved(device);
}

void StandaloneRuntime::nodeAdded(plugin::DeviceDriver* deviceDriver, const std::shared_ptr<plugin::NodeDriver>& driver)
{
    std::shared_ptr<DeviceImpl> device = findDevice(deviceDriver);
    if (!device || !driver || findNode(driver.get()))
        return;
    std::shared_ptr<NodeImpl> node = makeNode(device, driver);
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        device->addNode(node);
        m_nodes[node->driverKey()] = node;
    }
    postNodeAdded(node);
}

void StandaloneRuntime::nodeRemoved(plugin::DeviceDriver* deviceDriver, const std::shared_ptr<plugin::NodeDriver>& driver)
{
    std::shared_ptr<NodeImpl> node;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_nodes.find(driver.get());
        if (it == m_nodes.end() || it->second->device()->driverKey() != deviceDriver)
            return;
        node = it->second;
        m_nodes.erase(it);
        node->device()->takeNode(driver.get());
    }
    retireNode(*node);
    postNodeRemoved(node);
}

void StandaloneRuntime::propertyChanged(plugin::DeviceDriver* deviceDriver, plugin::NodeDriver* nodeDriver,
                                        const std::string& name)
{
    std::shared_ptr<InterfaceImpl> target;
    if (nodeDriver)
        target = findNode(nodeDriver);
    else
        target = findDevice(deviceDriver);
    if (!target)
        return;
    const PropertyBase property = Type(target->type()).getProperty(name);
    if (property.isSet())
        postPropertyChanged(std::move(target), property);
}

void StandaloneRuntime::transportFailed(const std::string& message)
{
    queue().fail(message);
}

void StandaloneRuntime::depthSample(plugin::NodeDriver* node, DepthNode::NewSampleReceivedData&& sample)
{
    postSample(node, SampleQueue::Sample(std::move(sample)));
}

void StandaloneRuntime::colorSample(plugin::NodeDriver* node, ColorNode::NewSampleReceivedData&& sample)
{
    postSample(node, SampleQueue::Sample(std::move(sample)));
}

void StandaloneRuntime::audioSample(plugin::NodeDriver* node, AudioNode::NewSampleReceivedData&& sample)
{
    postSample(node, SampleQueue::Sample(std::move(sample)));
}

void StandaloneRuntime::postSample(plugin::NodeDriver* driver, SampleQueue::Sample&& sample)
{
    std::shared_ptr<NodeImpl> node = findNode(driver);
    if (!node || !node->isStreaming() || !node->accepts(sample))
        return;
    const uint64_t arrival = Utils::Clock::now();
    std::visit([arrival](auto& data) { data.timeOfArrival = arrival; }, sample);
    if (node->samples().push(std::move(sample)))
        queue().post([node = std::move(node)] { node->deliverNextSample(); });
}

} // namespace Zerlane::detail
