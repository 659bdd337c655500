#include "SimDriver.h"

#include "ListenerLink.h"
#include "SimCameraState.h"
#include "SimDevice.h"
#include "SimNode.h"
#include "SimWorld.h"

#include "Zerlane/Exceptions.h"

#include <algorithm>

namespace Zerlane::sim {

SimDriver::~SimDriver()
{
    close();
}

void SimDriver::open(plugin::DriverListener* listener)
{
    if (!listener)
        throw ArgumentException("the simulated camera driver needs a listener");
    if (m_open)
        throw InvalidOperationException("the simulated camera driver is already open");
    m_link = std::make_shared<ListenerLink>(listener);
    m_open = true;
    SimWorld::instance().attach(*this);
}

void SimDriver::close()
{
    if (!m_open)
        return;
    SimWorld::instance().detach(*this);
    m_open = false;
}

void SimDriver::detachAll()
{
    for (const std::shared_ptr<SimDevice>& device : m_devices)
        device->stopAllNodes();
    m_devices.clear();
    if (m_link)
        m_link->detach();
}

std::shared_ptr<SimDevice> SimDriver::findDevice(const std::string& serial) const
{
    const auto it = std::find_if(m_devices.begin(), m_devices.end(),
                                 [&](const std::shared_ptr<SimDevice>& d) { return d->serial() == serial; });
    return it == m_devices.end() ? nullptr : *it;
}

void SimDriver::cameraPlugged(const std::shared_ptr<SimCameraState>& camera)
{
    auto device = std::make_shared<SimDevice>(camera, m_link);
    for (NodeKind kind : camera->nodes)
        device->addNode(kind);
    m_devices.push_back(device);
    m_link->notify([&](plugin::DriverListener& listener) { listener.deviceAdded(device); });
}

void SimDriver::cameraUnplugged(const std::string& serial)
{
    const std::shared_ptr<SimDevice> device = findDevice(serial);
    if (!device)
        return;
    m_devices.erase(std::find(m_devices.begin(), m_devices.end(), device));
    // Nothing streams from a camera that is gone.
    device->stopAllNodes();
    m_link->notify([&](plugin::DriverListener& listener) { listener.deviceRemoved(device); });
}

void SimDriver::devicePropertyChanged(const std::string& serial, const std::string& name)
{
    if (const std::shared_ptr<SimDevice> device = findDevice(serial))
        device->reportPropertyChanged(name);
}

void SimDriver::nodePlugged(const std::string& serial, NodeKind kind)
{
    const std::shared_ptr<SimDevice> device = findDevice(serial);
    if (!device)
        return;
    const std::shared_ptr<plugin::NodeDriver> node = device->addNode(kind);
    m_link->notify([&](plugin::DriverListener& listener) { listener.nodeAdded(device.get(), node); });
}

void SimDriver::nodeUnplugged(const std::string& serial, NodeKind kind)
{
    const std::shared_ptr<SimDevice> device = findDevice(serial);
    if (!device)
        return;
    const std::shared_ptr<plugin::NodeDriver> node = device->removeNode(kind);
    if (node)
        m_link->notify([&](plugin::DriverListener& listener) { listener.nodeRemoved(device.get(), node); });
}

void SimDriver::reportTransportFailure(const std::string& message)
{
    m_link->notify([&](plugin::DriverListener& listener) { listener.transportFailed(message); });
}

std::vector<std::shared_ptr<SimNode>> SimDriver::allNodes() const
{
    std::vector<std::shared_ptr<SimNode>> nodes;
    for (const std::shared_ptr<SimDevice>& device : m_devices)
        for (std::shared_ptr<SimNode>& node : device->simNodes())
            nodes.push_back(std::move(node));
    return nodes;
}

} // namespace Zerlane::sim
