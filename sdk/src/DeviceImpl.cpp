#include "DeviceImpl.h"

#include "NodeImpl.h"
#include "TypeImpl.h"

#include <algorithm>

namespace Zerlane::detail {

DeviceImpl::DeviceImpl(std::weak_ptr<ContextImpl> context, const ContextImpl* owner,
                       std::shared_ptr<plugin::DeviceDriver> driver)
    : InterfaceImpl(std::move(context), owner, TypeImpl::forSpec(driver->type())),
      m_driver(std::move(driver)),
      m_serial(m_driver->serialNumber())
{
}

bool DeviceImpl::controlledByAnotherClient() const
{
    return m_driver->controlledByAnotherClient();
}

void DeviceImpl::firePropertyChanged(const PropertyBase& property)
{
    m_propertyChanged.fire(handle(), PropertyChangedData {property});
}

Device DeviceImpl::handle()
{
    return Device(std::static_pointer_cast<DeviceImpl>(shared_from_this()));
}

plugin::DeviceDriver& DeviceImpl::driver() const
{
    ensureConnected();
    return *m_driver;
}

std::vector<std::shared_ptr<NodeImpl>> DeviceImpl::nodes() const
{
    std::lock_guard<std::mutex> lock(m_nodesMutex);
    return m_nodes;
}

void DeviceImpl::addNode(std::shared_ptr<NodeImpl> node)
{
    std::lock_guard<std::mutex> lock(m_nodesMutex);
    m_nodes.push_back(std::move(node));
}

std::shared_ptr<NodeImpl> DeviceImpl::takeNode(const plugin::NodeDriver* driver)
{
    std::lock_guard<std::mutex> lock(m_nodesMutex);
    auto it = std::find_if(m_nodes.begin(), m_nodes.end(),
                           [driver](const std::shared_ptr<NodeImpl>& node) { return node->driverKey() == driver; });
    if (it == m_nodes.end())
        return nullptr;
    std::shared_ptr<NodeImpl> node = *it;
    m_nodes.erase(it);
    return node;
}

std::vector<std::shared_ptr<NodeImpl>> DeviceImpl::takeAllNodes()
{
    std::lock_guard<std::mutex> lock(m_nodesMutex);
    std::vector<std::shared_ptr<NodeImpl>> nodes;
    nodes.swap(m_nodes);
    return nodes;
}

PropertyValue DeviceImpl::driverProperty(const std::string& name) const
{
    return m_driver->getProperty(name);
}

void DeviceImpl::setDriverProperty(const std::string& name, const PropertyValue& value)
{
    m_driver->setProperty(name, value);
}

} // namespace Zerlane::detail
