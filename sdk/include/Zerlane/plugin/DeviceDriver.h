#pragma once

#include "Zerlane/Device.h"
#include "Zerlane/plugin/NodeDriver.h"
#include "Zerlane/plugin/TypeSpec.h"

#include <memory>
#include <string>
#include <vector>

namespace Zerlane::plugin {

// One camera as a plug-in implements it. All methods may be called from any thread.
class DeviceDriver {
public:
    virtual ~DeviceDriver() = default;

    virtual Device::Model model() const = 0;
    virtual std::string serialNumber() const = 0;
    virtual int32_t usbBackendVersion() const = 0;
    virtual int32_t tofControllerVersion() const = 0;
    virtual bool overheating() const = 0;
    virtual bool overheated() const = 0;

    virtual std::shared_ptr<const TypeSpec> type() const = 0;
    virtual PropertyValue getProperty(const std::string& name) const = 0;
    virtual void setProperty(const std::string& name, const PropertyValue& value) = 0;

    virtual bool controlledByAnotherClient() const { return false; }

    // The nodes present now, in a stable order.
    virtual std::vector<std::shared_ptr<NodeDriver>> nodes() const = 0;
};

} // namespace Zerlane::plugin
