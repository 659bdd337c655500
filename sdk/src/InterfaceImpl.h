#pragma once

#include "Zerlane/Property.h"

#include <atomic>
#include <memory>
#include <string>

namespace Zerlane::detail {

class ContextImpl;
class PropertyImpl;
class TypeImpl;

// What devices and nodes have in common: a type with properties, control by this context, and the
// connected state. Each context has its own DeviceImpl / NodeImpl per camera-side object, so control and
// registration are per context.
class InterfaceImpl : public std::enable_shared_from_this<InterfaceImpl> {
public:
    InterfaceImpl(std::weak_ptr<ContextImpl> context, const ContextImpl* owner, std::shared_ptr<const TypeImpl> type);
    virtual ~InterfaceImpl();

    InterfaceImpl(const InterfaceImpl&) = delete;
    InterfaceImpl& operator=(const InterfaceImpl&) = delete;

    virtual bool isDevice() const = 0;
    // "device ZS0001", "depth node of device ZS0001": how messages name it.
    virtual std::string description() const = 0;

    const std::shared_ptr<const TypeImpl>& type() const { return m_type; }

    bool isConnected() const { return m_connected.load(); }
    void markDisconnected() { m_connected = false; }
    // Throws InvalidOperationException once the camera-side object is gone.
    void ensureConnected() const;

    bool belongsTo(const ContextImpl* context) const { return m_owner == context; }
    // The owning context, or null once it has been destroyed.
    std::shared_ptr<ContextImpl> context() const { return m_context.lock(); }

    bool isControlled() const { return m_controlled.load(); }
    void setControlled(bool controlled) { m_controlled = controlled; }
    // This context may change properties that need control.
    virtual bool hasControl() const { return isControlled(); }
    virtual bool controlledByAnotherClient() const = 0;

    // Reads through the plug-in; the caller has checked the property against the type.
    PropertyValue readProperty(const PropertyImpl& property) const;
    // Writes through the plug-in, then reports the change to the context's event queue.
    void writeProperty(const PropertyBase& property, const PropertyValue& value);
    // Queues a property-changed event for this device or node.
    void postPropertyChanged(const PropertyBase& property);

    // Runs on the thread inside Context::run().
    virtual void firePropertyChanged(const PropertyBase& property) = 0;

protected:
    virtual PropertyValue driverProperty(const std::string& name) const = 0;
    virtual void setDriverProperty(const std::string& name, const PropertyValue& value) = 0;

private:
    std::weak_ptr<ContextImpl> m_context;
    const ContextImpl* m_owner; // identity only, never dereferenced
    std::shared_ptr<const TypeImpl> m_type;
    std::atomic<bool> m_connected {true};
    std::atomic<bool> m_controlled {false};
};

} // namespace Zerlane::detail
