#pragma once

#include "Zerlane/Device.h"
#include "Zerlane/Event.h"
#include "Zerlane/Export.h"
#include "Zerlane/Node.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Zerlane {

namespace detail {
class ContextImpl;
}

// One connection to the camera service: the in-process driver (standalone) or a server over TCP.
//
// Threading: run() dispatches every event of the context, its devices and its nodes on the calling
// thread, one at a time. All other operations may be called from any thread.
class ZERLANE_API Context {
public:
    // Port of Context::create() without arguments.
    static constexpr uint16_t DEFAULT_PORT = 6909;

    // Another client of the same server arrived or left.
    struct ClientData_p {
        std::string name;
        int32_t pid = 0;
        std::string address;
        uint16_t port = 0;
    };
    using ClientConnectedData_p = ClientData_p;
    using ClientDisconnectedData_p = ClientData_p;

    struct DeviceAddedData {
        Device device;
    };
    struct DeviceRemovedData {
        Device device;
    };

    Context();
    explicit Context(std::shared_ptr<detail::ContextImpl> impl); // library use

    // Loads the device plug-ins in this process. The devices present are listed by getDevices()
    // as soon as this returns.
    static Context createStandalone();
    // Connects to a server on localhost:DEFAULT_PORT, or on host:port. Throws TransportException
    // when the server cannot be reached.
    static Context create();
    static Context create(const std::string& host, uint16_t port);

    bool isSet() const;

    // Dispatches events until quit(). Throws TransportException when the connection is lost.
    void run();
    // Makes run() return; may be called from any thread, also before run() starts (run() then returns
    // at once). Never throws.
    void quit();

    std::vector<Device> getDevices() const;

    // Only registered nodes deliver samples, and only between startNodes() and stopNodes().
    void registerNode(const Node& node);
    void unregisterNode(const Node& node);

    // Control is the right to change properties and configurations. It is exclusive between clients:
    // when another client holds it, requestControl throws TimeoutException once timeoutMs has passed.
    // Control of a device includes control of its nodes.
    void requestControl(const Device& device, int32_t timeoutMs = 0);
    void requestControl(const Node& node, int32_t timeoutMs = 0);
    void releaseControl(const Device& device);
    void releaseControl(const Node& node);
    bool hasControl(const Device& device) const;
    bool hasControl(const Node& node) const;

    // Starts (stops) streaming of every registered node.
    void startNodes();
    void stopNodes();

    Event<Context, ClientConnectedData_p>& clientConnectedEvent();
    Event<Context, ClientDisconnectedData_p>& clientDisconnectedEvent();
    Event<Context, DeviceAddedData>& deviceAddedEvent();
    Event<Context, DeviceRemovedData>& deviceRemovedEvent();

    bool operator==(const Context& other) const { return m_impl == other.m_impl; }
    bool operator!=(const Context& other) const { return m_impl != other.m_impl; }
    bool operator<(const Context& other) const { return m_impl < other.m_impl; }

    const std::shared_ptr<detail::ContextImpl>& impl() const { return m_impl; }

private:
    std::shared_ptr<detail::ContextImpl> m_impl;
};

// Handler of the client events: void (Object::*)(Context, Context::ClientData_p).
template <class Object>
using StructMethodHandler = MethodHandler<Context, Context::ClientData_p, Object>;

} // namespace Zerlane
