#include "Zerlane/Node.h"

#include "Checked.h"
#include "DeviceImpl.h"
#include "NodeImpl.h"

#include "Zerlane/Device.h"
#include "Zerlane/Utils/Format.h"
#include "Zerlane/plugin/FaultInjector.h"

namespace Zerlane {

using plugin::FaultInjector;

namespace {
const char* const kHandle = "node";
}

std::string NodeKind_toString(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Depth: return "depth";
    case NodeKind::Color: return "color";
    case NodeKind::Audio: return "audio";
    case NodeKind::Unsupported: break;
    }
    return "unsupported";
}

Node::Node() = default;

Node::Node(std::shared_ptr<detail::NodeImpl> impl) : m_impl(std::move(impl)) {}

Node::Node(const Node& node, NodeKind required) : m_impl(node.m_impl)
{
    const detail::NodeImpl& impl = detail::checked(m_impl, kHandle);
    if (impl.kind() != required) {
        throw InvalidOperationException(Utils::Format("% is a % node, not a % node") % impl.description()
                                        % NodeKind_toString(impl.kind())
                                        % NodeKind_toString(required));
    }
}

bool Node::isSet() const
{
    return m_impl != nullptr;
}

bool Node::isConnected() const
{
    return m_impl && m_impl->isConnected() && m_impl->device()->isConnected();
}

NodeKind Node::kind() const
{
    return detail::checked(m_impl, kHandle).kind();
}

Type Node::getType() const
{
    return Type(detail::checked(m_impl, kHandle).type());
}

Device Node::getDevice() const
{
    return detail::checked(m_impl, kHandle).device()->handle();
}

std::string Node::getSerialNumber() const
{
    FaultInjector::check("Node::getSerialNumber");
    return detail::checked(m_impl, kHandle).driver().serialNumber();
}

int32_t Node::getVID() const
{
    FaultInjector::check("Node::getVID");
    return detail::checked(m_impl, kHandle).driver().vid();
}

int32_t Node::getPID() const
{
    FaultInjector::check("Node::getPID");
    return detail::checked(m_impl, kHandle).driver().pid();
}

int32_t Node::getRevision() const
{
    FaultInjector::check("Node::getRevision");
    return detail::checked(m_impl, kHandle).driver().revision();
}

int32_t Node::getMediaInterface() const
{
    FaultInjector::check("Node::getMediaInterface");
    return detail::checked(m_impl, kHandle).driver().mediaInterface();
}

Event<Node, PropertyChangedData>& Node::propertyChangedEvent()
{
    return detail::checked(m_impl, kHandle).propertyChangedEvent();
}

} // namespace Zerlane
