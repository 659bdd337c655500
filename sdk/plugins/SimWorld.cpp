#include "SimWorld.h"

#include "SimCameraState.h"
#include "SimDriver.h"
#include "SimNode.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/plugin/FaultInjector.h"
#include "Zerlane/Utils/EnvironmentVariable.h"
#include "Zerlane/Utils/Format.h"
#include "Zerlane/Utils/HMLogger.h"

#include <algorithm>
#include <cstdio>

namespace Zerlane::sim {

namespace {

std::string kindName(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Depth:
        return "depth";
    case NodeKind::Color:
        return "colour";
    case NodeKind::Audio:
        return "audio";
    case NodeKind::Unsupported:
        return "unsupported";
    }
    return "unknown";
}

void warn(const std::string& message)
{
    Utils::HMLogger* log = Utils::HMLogger::instance();
    log->warning(message);
    log->release();
}

} // namespace

SimWorld& SimWorld::instance()
{
    // Never destroyed: contexts that outlive static destruction may still close their drivers.
    static SimWorld* world = new SimWorld();
    return *world;
}

SimWorld::SimWorld()
{
    const Utils::EnvironmentVariable cameras("ZERLANE_SIM_CAMERAS");
    if (cameras.isSet()) {
        const int count = cameras.getIntValue(-1);
        if (count >= 0 && count <= MaxCameras)
            m_initialCameras = count;
        else
            warn(Utils::Format("ZERLANE_SIM_CAMERAS='%' is not a number of cameras from 0 to %: using 1") %
                 cameras.getValue() % MaxCameras);
    }
    m_seed = uint32_t(Utils::EnvironmentVariable("ZERLANE_SIM_SEED").getIntValue(1));
    plugInitialCameras();
}

void SimWorld::plugInitialCameras()
{
    for (int i = 0; i < m_initialCameras; ++i)
        plug(nextFreeSerial());
}

std::string SimWorld::nextFreeSerial() const
{
    for (int number = 1;; ++number) {
        char serial[16];
        std::snprintf(serial, sizeof serial, "ZS%04d", number);
        const bool taken = std::any_of(m_cameras.begin(), m_cameras.end(),
                                       [&](const std::shared_ptr<SimCameraState>& c) { return c->serial == serial; });
        if (!taken)
            return serial;
    }
}

std::shared_ptr<SimCameraState> SimWorld::findCamera(const std::string& serial) const
{
    const auto it = std::find_if(m_cameras.begin(), m_cameras.end(),
                                 [&](const std::shared_ptr<SimCameraState>& c) { return c->serial == serial; });
    if (it == m_cameras.end())
        throw ArgumentException(Utils::Format("no simulated camera with serial number '%' is plugged in") % serial);
    return *it;
}

void SimWorld::plug(const std::string& serial)
{
    auto camera = std::make_shared<SimCameraState>(serial);
    camera->nodes = {NodeKind::Depth, NodeKind::Color, NodeKind::Audio};
    m_cameras.push_back(camera);
    for (SimDriver* driver : m_drivers)
        driver->cameraPlugged(camera);
}

void SimWorld::unplug(const std::string& serial)
{
    const std::shared_ptr<SimCameraState> camera = findCamera(serial);
    m_cameras.erase(std::find(m_cameras.begin(), m_cameras.end(), camera));
    for (SimDriver* driver : m_drivers)
        driver->cameraUnplugged(serial);
}

void SimWorld::attach(SimDriver& driver)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_drivers.push_back(&driver);
    for (const std::shared_ptr<SimCameraState>& camera : m_cameras)
        driver.cameraPlugged(camera);
    if (m_transportFailure)
        driver.reportTransportFailure(*m_transportFailure);
}

void SimWorld::detach(SimDriver& driver)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_drivers.erase(std::remove(m_drivers.begin(), m_drivers.end(), &driver), m_drivers.end());
    driver.detachAll();
}

void SimWorld::reset()
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_stepped = false;
    m_transportFailure.reset();
    plugin::FaultInjector::clear();
    while (!m_cameras.empty())
        unplug(m_cameras.back()->serial);
    plugInitialCameras();
}

std::string SimWorld::addCamera(const std::string& serial)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    const std::string chosen = serial.empty() ? nextFreeSerial() : serial;
    const bool taken = std::any_of(m_cameras.begin(), m_cameras.end(),
                                   [&](const std::shared_ptr<SimCameraState>& c) { return c->serial == chosen; });
    if (taken)
        throw ArgumentException(Utils::Format("a simulated camera with serial number '%' is already plugged in") %
                                chosen);
    plug(chosen);
    return chosen;
}

void SimWorld::removeCamera(const std::string& serial)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    unplug(serial);
}

std::vector<std::string> SimWorld::cameras() const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    std::vector<std::string> serials;
    for (const std::shared_ptr<SimCameraState>& camera : m_cameras)
        serials.push_back(camera->serial);
    return serials;
}

void SimWorld::addNode(const std::string& serial, NodeKind kind)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    const std::shared_ptr<SimCameraState> camera = findCamera(serial);
    if (std::find(camera->nodes.begin(), camera->nodes.end(), kind) != camera->nodes.end())
        throw ArgumentException(Utils::Format("simulated camera % already has a % node") % serial % kindName(kind));
    camera->nodes.push_back(kind);
    for (SimDriver* driver : m_drivers)
        driver->nodePlugged(serial, kind);
}

void SimWorld::removeNode(const std::string& serial, NodeKind kind)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    const std::shared_ptr<SimCameraState> camera = findCamera(serial);
    const auto it = std::find(camera->nodes.begin(), camera->nodes.end(), kind);
    if (it == camera->nodes.end())
        throw ArgumentException(Utils::Format("simulated camera % has no % node") % serial % kindName(kind));
    camera->nodes.erase(it);
    for (SimDriver* driver : m_drivers)
        driver->nodeUnplugged(serial, kind);
}

void SimWorld::setControlledByAnotherClient(const std::string& serial, bool held)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    findCamera(serial)->controlledByAnotherClient = held;
}

void SimWorld::setOverheating(const std::string& serial, bool overheating, bool overheated)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    const std::shared_ptr<SimCameraState> camera = findCamera(serial);
    camera->overheating = overheating || overheated;
    camera->overheated = overheated;
    // A camera that overheated shuts itself down; one that runs hot reports its temperature.
    if (overheated) {
        unplug(serial);
        return;
    }
    for (SimDriver* driver : m_drivers)
        driver->devicePropertyChanged(serial, "temperature");
}

void SimWorld::setStepped(bool stepped)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_stepped = stepped;
    if (!stepped)
        return;
    // A clocked sample already under way still arrives; wait for it so none comes after this returns.
    for (SimDriver* driver : m_drivers)
        for (const std::shared_ptr<SimNode>& node : driver->allNodes())
            node->waitForProduction();
}

void SimWorld::step(int count)
{
    if (count < 0)
        throw ArgumentException(Utils::Format("cannot step a negative number (%) of samples") % count);
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    std::vector<std::shared_ptr<SimNode>> nodes;
    for (SimDriver* driver : m_drivers)
        for (std::shared_ptr<SimNode>& node : driver->allNodes())
            nodes.push_back(std::move(node));
    for (int i = 0; i < count; ++i)
        for (const std::shared_ptr<SimNode>& node : nodes)
            node->produceSteppedSample();
}

void SimWorld::failTransport(const std::string& message)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_transportFailure = message;
    for (SimDriver* driver : m_drivers)
        driver->reportTransportFailure(message);
}

} // namespace Zerlane::sim
