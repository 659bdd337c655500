#include "Zerlane/Interface.h"

#include "Checked.h"
#include "DeviceImpl.h"
#include "NodeImpl.h"

namespace Zerlane {

Interface::Interface() = default;

Interface::Interface(const Device& device) : m_impl(device.impl()) {}

Interface::Interface(const Node& node) : m_impl(node.impl()) {}

bool Interface::isSet() const
{
    return m_impl != nullptr;
}

bool Interface::isDevice() const
{
    return m_impl && m_impl->isDevice();
}

bool Interface::isNode() const
{
    return m_impl && !m_impl->isDevice();
}

Type Interface::getType() const
{
    return Type(detail::checked(m_impl, "interface").type());
}

Device Interface::toDevice() const
{
    const detail::InterfaceImpl& impl = detail::checked(m_impl, "interface");
    if (!impl.isDevice())
        throw InvalidOperationException("the interface of " + impl.description() + " is not a device");
    return Device(std::static_pointer_cast<detail::DeviceImpl>(m_impl));
}

Node Interface::toNode() const
{
    const detail::InterfaceImpl& impl = detail::checked(m_impl, "interface");
    if (impl.isDevice())
        throw InvalidOperationException("the interface of " + impl.description() + " is not a node");
    return Node(std::static_pointer_cast<detail::NodeImpl>(m_impl));
}

} // namespace Zerlane
