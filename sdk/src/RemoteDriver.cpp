#include "RemoteDriver.h"

#include "RemoteDeviceDriver.h"
#include "RemoteNodeDriver.h"
#include "ValueCodec.h"
#include "WireLimits.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/HMLogger.h"

namespace Zerlane::detail {

RemoteDriver::RemoteDriver(std::shared_ptr<ServerConnection> connection, ClientEvent clientEvent)
    : m_connection(std::move(connection)), m_clientEvent(std::move(clientEvent))
{
}

RemoteDriver::~RemoteDriver()
{
    close();
}

void RemoteDriver::open(plugin::DriverListener* listener)
{
    m_listener = listener;
    for (const wire::DeviceInfo& info : m_connection->welcome().devices())
        addDevice(info);
    m_connection->startReading(this);
}

void RemoteDriver::close()
{
    m_connection->close();
}

std::shared_ptr<const plugin::TypeSpec> RemoteDriver::typeFor(const wire::TypeSpec& spec)
{
    // One spec per type name, so that Type and property handles of equal types compare equal.
    std::lock_guard<std::mutex> lock(m_mutex);
    std::shared_ptr<const plugin::TypeSpec>& known = m_types[spec.name()];
    if (!known)
        known = std::make_shared<const plugin::TypeSpec>(wire::ValueCodec::decode(spec));
    return known;
}

std::shared_ptr<RemoteNodeDriver> RemoteDriver::makeNode(const wire::NodeInfo& info)
{
    auto node = std::make_shared<RemoteNodeDriver>(m_connection, info, typeFor(info.type()));
    std::lock_guard<std::mutex> lock(m_mutex);
    m_nodes[info.id()] = node;
    return node;
}

void RemoteDriver::addDevice(const wire::DeviceInfo& info)
{
    if (info.nodes_size() > wire::WireLimits::MAX_NODES)
        throw TransportException("the server reports a device with too many nodes");
    {
        // A device that arrives while this client is being welcomed may be announced twice.
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_devices.count(info.id()))
            return;
    }
    auto device = std::make_shared<RemoteDeviceDriver>(m_connection, info, typeFor(info.type()));
    for (const wire::NodeInfo& node : info.nodes())
        device->addNode(makeNode(node));
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_devices[info.id()] = device;
    }
    m_listener->deviceAdded(device);
}

void RemoteDriver::removeDevice(uint32_t id)
{
    std::shared_ptr<RemoteDeviceDriver> device;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_devices.find(id);
        if (it == m_devices.end())
            return;
        device = it->second;
        m_devices.erase(it);
        for (const std::shared_ptr<RemoteNodeDriver>& node : device->remoteNodes()) {
            node->markGone();
            m_nodes.erase(node->id());
        }
    }
    m_listener->deviceRemoved(device);
}

void RemoteDriver::addNode(uint32_t deviceId, const wire::NodeInfo& info)
{
    std::shared_ptr<RemoteDeviceDriver> device;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_devices.find(deviceId);
        if (it == m_devices.end() || m_nodes.count(info.id()))
            return;
        device = it->second;
    }
    std::shared_ptr<RemoteNodeDriver> node = makeNode(info);
    device->addNode(node);
    m_listener->nodeAdded(device.get(), node);
}

std::shared_ptr<RemoteDeviceDriver> RemoteDriver::deviceOfNode(uint32_t node) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& [id, device] : m_devices) {
        for (const std::shared_ptr<RemoteNodeDriver>& own : device->remoteNodes()) {
            if (own->id() == node)
                return device;
        }
    }
    return nullptr;
}

void RemoteDriver::removeNode(uint32_t id)
{
    std::shared_ptr<RemoteDeviceDriver> device = deviceOfNode(id);
    if (!device)
        return;
    std::shared_ptr<RemoteNodeDriver> node = device->takeNode(id);
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_nodes.erase(id);
    }
    node->markGone();
    m_listener->nodeRemoved(device.get(), node);
}

void RemoteDriver::propertyChanged(uint32_t target, const std::string& name)
{
    std::shared_ptr<RemoteDeviceDriver> device;
    std::shared_ptr<RemoteNodeDriver> node;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (auto it = m_devices.find(target); it != m_devices.end())
            device = it->second;
        else if (auto found = m_nodes.find(target); found != m_nodes.end())
            node = found->second;
    }
    if (node)
        device = deviceOfNode(target);
    if (device)
        m_listener->propertyChanged(device.get(), node.get(), name);
}

void RemoteDriver::notice(const wire::Notice& notice)
{
    try {
        switch (notice.kind()) {
        case wire::NOTICE_DEVICE_ADDED: addDevice(notice.device()); break;
        case wire::NOTICE_DEVICE_REMOVED: removeDevice(notice.target()); break;
        case wire::NOTICE_NODE_ADDED: addNode(notice.target(), notice.node()); break;
        case wire::NOTICE_NODE_REMOVED: removeNode(notice.target()); break;
        case wire::NOTICE_PROPERTY_CHANGED: propertyChanged(notice.target(), notice.name()); break;
        case wire::NOTICE_CLIENT_CONNECTED:
        case wire::NOTICE_CLIENT_DISCONNECTED: {
            const wire::ClientInfo& c = notice.client();
            m_clientEvent(notice.kind() == wire::NOTICE_CLIENT_CONNECTED,
                          Context::ClientData_p {c.name(), c.pid(), c.address(), static_cast<uint16_t>(c.port())});
            break;
        }
        case wire::NOTICE_TRANSPORT_FAILED: m_listener->transportFailed(notice.name()); break;
        default: break; // a notice of a later protocol version
        }
    } catch (const TransportException&) {
        throw; // the server broke the protocol: the connection ends
    } catch (const std::exception& e) {
        Utils::HMLogger* logger = Utils::HMLogger::instance();
        logger->warning(std::string("handling a notice of the server failed: ") + e.what());
        logger->release();
    }
}

void RemoteDriver::sample(uint32_t node, wire::SampleCodec::Sample&& sample)
{
    std::shared_ptr<RemoteNodeDriver> target;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_nodes.find(node);
        if (it == m_nodes.end())
            return; // removed while the sample was on its way
        target = it->second;
    }
    target->deliver(std::move(sample));
}

void RemoteDriver::lost(const std::string& message)
{
    if (m_listener)
        m_listener->transportFailed(message);
}

} // namespace Zerlane::detail
