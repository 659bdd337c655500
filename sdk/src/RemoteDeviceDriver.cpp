#include "RemoteDeviceDriver.h"

#include "RemoteNodeDriver.h"
#include "RemoteRequest.h"
#include "ServerConnection.h"

#include <algorithm>

namespace Zerlane::detail {

RemoteDeviceDriver::RemoteDeviceDriver(std::shared_ptr<ServerConnection> connection, const wire::DeviceInfo& info,
                                       std::shared_ptr<const plugin::TypeSpec> type)
    : m_connection(std::move(connection)),
      m_id(info.id()),
      m_model(static_cast<Device::Model>(info.model())),
      m_serial(info.serial()),
      m_usbBackendVersion(info.usb_backend_version()),
      m_tofControllerVersion(info.tof_controller_version()),
      m_type(std::move(type))
{
}

Device::Model RemoteDeviceDriver::model() const
{
    m_connection->ensureOpen();
    return m_model;
}

std::string RemoteDeviceDriver::serialNumber() const
{
    m_connection->ensureOpen();
    return m_serial;
}

int32_t RemoteDeviceDriver::usbBackendVersion() const
{
    m_connection->ensureOpen();
    return m_usbBackendVersion;
}

int32_t RemoteDeviceDriver::tofControllerVersion() const
{
    m_connection->ensureOpen();
    return m_tofControllerVersion;
}

bool RemoteDeviceDriver::overheating() const
{
    return std::get<bool>(RemoteRequest::value(*m_connection, wire::OP_GET_OVERHEATING, m_id));
}

bool RemoteDeviceDriver::overheated() const
{
    return std::get<bool>(RemoteRequest::value(*m_connection, wire::OP_GET_OVERHEATED, m_id));
}

std::shared_ptr<const plugin::TypeSpec> RemoteDeviceDriver::type() const
{
    return m_type;
}

PropertyValue RemoteDeviceDriver::getProperty(const std::string& name) const
{
    return RemoteRequest::value(*m_connection, wire::OP_GET_PROPERTY, m_id, name);
}

void RemoteDeviceDriver::setProperty(const std::string& name, const PropertyValue& value)
{
    RemoteRequest::send(*m_connection, wire::OP_SET_PROPERTY, m_id, name, &value);
}

std::vector<std::shared_ptr<plugin::NodeDriver>> RemoteDeviceDriver::nodes() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return {m_nodes.begin(), m_nodes.end()};
}

std::vector<std::shared_ptr<RemoteNodeDriver>> RemoteDeviceDriver::remoteNodes() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_nodes;
}

void RemoteDeviceDriver::addNode(std::shared_ptr<RemoteNodeDriver> node)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_nodes.push_back(std::move(node));
}

std::shared_ptr<RemoteNodeDriver> RemoteDeviceDriver::takeNode(uint32_t id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = std::find_if(m_nodes.begin(), m_nodes.end(), [id](const auto& node) { return node->id() == id; });
    if (it == m_nodes.end())
        return nullptr;
    std::shared_ptr<RemoteNodeDriver> node = *it;
    m_nodes.erase(it);
    return node;
}

} // namespace Zerlane::detail
