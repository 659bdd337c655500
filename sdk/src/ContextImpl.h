#pragma once

#include "EventQueue.h"

#include "Zerlane/Context.h"

#include <atomic>
#include <memory>
#include <vector>

namespace Zerlane::detail {

class DeviceImpl;
class InterfaceImpl;
class NodeImpl;

// What every kind of context shares: the event queue and its dispatcher, and the context's own events.
// The transport side (in-process drivers, a server connection) is a subclass.
class ContextImpl : public std::enable_shared_from_this<ContextImpl> {
public:
    ContextImpl();
    virtual ~ContextImpl();

    ContextImpl(const ContextImpl&) = delete;
    ContextImpl& operator=(const ContextImpl&) = delete;

    // Dispatches queued events on the calling thread until quit(); only one thread at a time.
    void run();
    void quit() noexcept;

    EventQueue& queue() { return m_queue; }
    // One event per property however often it changes before run() gets to it.
    void postPropertyChanged(std::shared_ptr<InterfaceImpl> source, const PropertyBase& property);
    void postDeviceAdded(std::shared_ptr<DeviceImpl> device);
    void postDeviceRemoved(std::shared_ptr<DeviceImpl> device);
    void postNodeAdded(std::shared_ptr<NodeImpl> node);
    void postNodeRemoved(std::shared_ptr<NodeImpl> node);
    void postClientConnected(const Context::ClientData_p& client);
    void postClientDisconnected(const Context::ClientData_p& client);

    virtual std::vector<Device> devices() const = 0;
    virtual void registerNode(NodeImpl& node) = 0;
    virtual void unregisterNode(NodeImpl& node) = 0;
    virtual void requestControl(InterfaceImpl& target, int32_t timeoutMs) = 0;
    virtual void releaseControl(InterfaceImpl& target) = 0;
    virtual void startNodes() = 0;
    virtual void stopNodes() = 0;

    Event<Context, Context::ClientConnectedData_p>& clientConnectedEvent() { return m_clientConnected; }
    Event<Context, Context::ClientDisconnectedData_p>& clientDisconnectedEvent() { return m_clientDisconnected; }
    Event<Context, Context::DeviceAddedData>& deviceAddedEvent() { return m_deviceAdded; }
    Event<Context, Context::DeviceRemovedData>& deviceRemovedEvent() { return m_deviceRemoved; }

protected:
    // Throws when the context can no longer be used (a lost server connection); checked by run().
    virtual void ensureUsable() const {}

private:
    Context handle();

    EventQueue m_queue;
    std::atomic<bool> m_running {false};
    Event<Context, Context::ClientConnectedData_p> m_clientConnected;
    Event<Context, Context::ClientDisconnectedData_p> m_clientDisconnected;
    Event<Context, Context::DeviceAddedData> m_deviceAdded;
    Event<Context, Context::DeviceRemovedData> m_deviceRemoved;
};

} // namespace Zerlane::detail
