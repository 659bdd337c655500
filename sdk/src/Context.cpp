#include "Zerlane/Context.h"

#include "Checked.h"
#include "ContextImpl.h"
#include "DeviceImpl.h"
#include "NodeImpl.h"
#include "PluginLoader.h"
#include "ClientRuntime.h"
#include "ServerConnection.h"
#include "StandaloneRuntime.h"

#include "Zerlane/plugin/FaultInjector.h"

namespace Zerlane {

using plugin::FaultInjector;

namespace {

const char* const kHandle = "context";

template <class Impl>
Impl& ownedBy(const detail::ContextImpl& context, const std::shared_ptr<Impl>& impl, const char* handleName)
{
    Impl& object = detail::checked(impl, handleName);
    if (!object.belongsTo(&context))
        throw ArgumentException(object.description() + " belongs to another context");
    return object;
}

} // namespace

Context::Context() = default;

Context::Context(std::shared_ptr<detail::ContextImpl> impl) : m_impl(std::move(impl)) {}

Context Context::createStandalone()
{
    FaultInjector::check("Context::createStandalone");
    auto runtime = std::make_shared<detail::StandaloneRuntime>();
    runtime->open(detail::PluginLoader::createDrivers());
    return Context(std::move(runtime));
}

Context Context::create()
{
    return create("localhost", DEFAULT_PORT);
}

Context Context::create(const std::string& host, uint16_t port)
{
    FaultInjector::check("Context::create");
    auto runtime = std::make_shared<detail::ClientRuntime>(std::make_shared<detail::ServerConnection>(host, port));
    runtime->connect();
    return Context(std::move(runtime));
}

bool Context::isSet() const
{
    return m_impl != nullptr;
}

void Context::run()
{
    FaultInjector::check("Context::run");
    detail::checked(m_impl, kHandle).run();
}

void Context::quit()
{
    if (m_impl)
        m_impl->quit();
}

std::vector<Device> Context::getDevices() const
{
    FaultInjector::check("Context::getDevices");
    return detail::checked(m_impl, kHandle).devices();
}

void Context::registerNode(const Node& node)
{
    FaultInjector::check("Context::registerNode");
    detail::ContextImpl& context = detail::checked(m_impl, kHandle);
    context.registerNode(ownedBy(context, node.impl(), "node"));
}

void Context::unregisterNode(const Node& node)
{
    FaultInjector::check("Context::unregisterNode");
    detail::ContextImpl& context = detail::checked(m_impl, kHandle);
    context.unregisterNode(ownedBy(context, node.impl(), "node"));
}

void Context::requestControl(const Device& device, int32_t timeoutMs)
{
    FaultInjector::check("Context::requestControl");
    detail::ContextImpl& context = detail::checked(m_impl, kHandle);
    context.requestControl(ownedBy(context, device.impl(), "device"), timeoutMs);
}

void Context::requestControl(const Node& node, int32_t timeoutMs)
{
    FaultInjector::check("Context::requestControl");
    detail::ContextImpl& context = detail::checked(m_impl, kHandle);
    context.requestControl(ownedBy(context, node.impl(), "node"), timeoutMs);
}

void Context::releaseControl(const Device& device)
{
    FaultInjector::check("Context::releaseControl");
    detail::ContextImpl& context = detail::checked(m_impl, kHandle);
    context.releaseControl(ownedBy(context, device.impl(), "device"));
}

void Context::releaseControl(const Node& node)
{
    FaultInjector::check("Context::releaseControl");
    detail::ContextImpl& context = detail::checked(m_impl, kHandle);
    context.releaseControl(ownedBy(context, node.impl(), "node"));
}

bool Context::hasControl(const Device& device) const
{
    return m_impl && device.impl() && device.impl()->belongsTo(m_impl.get()) && device.impl()->hasControl();
}

bool Context::hasControl(const Node& node) const
{
    return m_impl && node.impl() && node.impl()->belongsTo(m_impl.get()) && node.impl()->hasControl();
}

void Context::startNodes()
{
    FaultInjector::check("Context::startNodes");
    detail::checked(m_impl, kHandle).startNodes();
}

void Context::stopNodes()
{
    FaultInjector::check("Context::stopNodes");
    detail::checked(m_impl, kHandle).stopNodes();
}

Event<Context, Context::ClientConnectedData_p>& Context::clientConnectedEvent()
{
    return detail::checked(m_impl, kHandle).clientConnectedEvent();
}

Event<Context, Context::ClientDisconnectedData_p>& Context::clientDisconnectedEvent()
{
    return detail::checked(m_impl, kHandle).clientDisconnectedEvent();
}

Event<Context, Context::DeviceAddedData>& Context::deviceAddedEvent()
{
    return detail::checked(m_impl, kHandle).deviceAddedEvent();
}

Event<Context, Context::DeviceRemovedData>& Context::deviceRemovedEvent()
{
    return detail::checked(m_impl, kHandle).deviceRemovedEvent();
}

} // namespace Zerlane
