#pragma once

#include "InterfaceImpl.h"

#include "Zerlane/Device.h"
#include "Zerlane/plugin/DeviceDriver.h"

#include <mutex>
#include <vector>

namespace Zerlane::detail {

class NodeImpl;

// One camera as one context sees it.
class DeviceImpl : public InterfaceImpl {
public:
    DeviceImpl(std::weak_ptr<ContextImpl> context, const ContextImpl* owner,
               std::shared_ptr<plugin::DeviceDriver> driver);

    bool isDevice() const override { return true; }
    std::string description() const override { return "device " + m_serial; }
    bool controlledByAnotherClient() const override;
    void firePropertyChanged(const PropertyBase& property) override;

    Device handle();
    const std::string& serial() const { return m_serial; }
    // The plug-in's device; throws InvalidOperationException once the camera is gone.
    plugin::DeviceDriver& driver() const;
    // The plug-in's device whatever the state (facts that stay true after unplugging).
    plugin::DeviceDriver& lastDriver() const { return *m_driver; }
    const plugin::DeviceDriver* driverKey() const { return m_driver.get(); }

    std::vector<std::shared_ptr<NodeImpl>> nodes() const;
    void addNode(std::shared_ptr<NodeImpl> node);
    std::shared_ptr<NodeImpl> takeNode(const plugin::NodeDriver* driver);
    // Empties the node list (the nodes hold their device, so this also breaks that cycle).
    std::vector<std::shared_ptr<NodeImpl>> takeAllNodes();

    Event<Device, Device::NodeAddedData>& nodeAddedEvent() { return m_nodeAdded; }
    Event<Device, Device::NodeRemovedData>& nodeRemovedEvent() { return m_nodeRemoved; }
    Event<Device, PropertyChangedData>& propertyChangedEvent() { return m_propertyChanged; }

protected:
    PropertyValue driverProperty(const std::string& name) const override;
    void setDriverProperty(const std::string& name, const PropertyValue& value) override;

private:
    std::shared_ptr<plugin::DeviceDriver> m_driver;
    std::string m_serial;
    mutable std::mutex m_nodesMutex;
    std::vector<std::shared_ptr<NodeImpl>> m_nodes;
    Event<Device, Device::NodeAddedData> m_nodeAdded;
    Event<Device, Device::NodeRemovedData> m_nodeRemoved;
    Event<Device, PropertyChangedData> m_propertyChanged;
};

} // namespace Zerlane::detail
