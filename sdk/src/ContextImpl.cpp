#include "ContextImpl.h"

#include "DeviceImpl.h"
#include "NodeImpl.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::detail {

namespace {

// Clears the running flag however run() ends.
class RunningGuard {
public:
    explicit RunningGuard(std::atomic<bool>& running) : m_running(running) {}
    ~RunningGuard() { m_running = false; }
    RunningGuard(const RunningGuard&) = delete;
    RunningGuard& operator=(const RunningGuard&) = delete;

private:
    std::atomic<bool>& m_running;
};

} // namespace

ContextImpl::ContextImpl() = default;

ContextImpl::~ContextImpl()
{
    m_queue.clear();
}

void ContextImpl::run()
{
    if (m_running.exchange(true))
        throw InvalidOperationException("Context::run() is already running on another thread");
    RunningGuard guard(m_running);
    ensureUsable();
    while (EventQueue::Action action = m_queue.waitNext())
        action();
}

void ContextImpl::quit() noexcept
{
    try {
        m_queue.quit();
    } catch (...) {
        // quit() must never throw; a failed lock leaves nothing we could do better
    }
}

Context ContextImpl::handle()
{
    return Context(shared_from_this());
}

void ContextImpl::postPropertyChanged(std::shared_ptr<InterfaceImpl> source, const PropertyBase& property)
{
    const std::string key = std::to_string(reinterpret_cast<std::uintptr_t>(source.get())) + "/" + property.name();
    m_queue.postOnce(key, [source = std::move(source), property] { source->firePropertyChanged(property); });
}

void ContextImpl::postDeviceAdded(std::shared_ptr<DeviceImpl> device)
{
    m_queue.post([this, device = std::move(device)] { m_deviceAdded.fire(handle(), {device->handle()}); });
}

void ContextImpl::postDeviceRemoved(std::shared_ptr<DeviceImpl> device)
{
    m_queue.post([this, device = std::move(device)] { m_deviceRemoved.fire(handle(), {device->handle()}); });
}

void ContextImpl::postNodeAdded(std::shared_ptr<NodeImpl> node)
{
    m_queue.post([node = std::move(node)] { node->device()->nodeAddedEvent().fire(node->device()->handle(), {node->handle()}); });
}

void ContextImpl::postNodeRemoved(std::shared_ptr<NodeImpl> node)
{
    m_queue.post([node = std::move(node)] { node->device()->nodeRemovedEvent().fire(node->device()->handle(), {node->handle()}); });
}

void ContextImpl::postClientConnected(const Context::ClientData_p& client)
{
    m_queue.post([this, client] { m_clientConnected.fire(handle(), client); });
}

void ContextImpl::postClientDisconnected(const Context::ClientData_p& client)
{
    m_queue.post([this, client] { m_clientDisconnected.fire(handle(), client); });
}

} // namespace Zerlane::detail
