#pragma once

#include "Zerlane/plugin/DeviceDriver.h"
#include "Zerlane/plugin/NodeDriver.h"

#include <memory>
#include <string>
#include <vector>

namespace Zerlane::plugin {

// What a driver tells the library. Implemented by the library; callable from any thread.
class DriverListener {
public:
    virtual ~DriverListener() = default;
    virtual void deviceAdded(const std::shared_ptr<DeviceDriver>& device) = 0;
    virtual void deviceRemoved(const std::shared_ptr<DeviceDriver>& device) = 0;
    virtual void nodeAdded(DeviceDriver* device, const std::shared_ptr<NodeDriver>& node) = 0;
    virtual void nodeRemoved(DeviceDriver* device, const std::shared_ptr<NodeDriver>& node) = 0;
    // node is null for a device property. Also sent for "configuration" after setConfiguration and for
    // read-only values that change ("range").
    virtual void propertyChanged(DeviceDriver* device, NodeDriver* node, const std::string& name) = 0;
    // The connection to the cameras is lost: Context::run() ends with TransportException(message).
    virtual void transportFailed(const std::string& message) = 0;
};

// One family of devices. A plug-in library makes one instance per context that loads it.
class Driver {
public:
    virtual ~Driver() = default;
    virtual std::string name() const = 0;
    // Reports every device present through listener->deviceAdded before it returns, then reports
    // arrivals and departures as they happen.
    virtual void open(DriverListener* listener) = 0;
    // Stops all streaming; no listener call is made after close() returns.
    virtual void close() = 0;
};

// A plug-in library exports this function (extern "C") under the name ZERLANE_PLUGIN_ENTRY.
using CreateDriversFunction = void (*)(std::vector<std::unique_ptr<Driver>>& drivers);

} // namespace Zerlane::plugin

#define ZERLANE_PLUGIN_ENTRY "zerlaneCreateDrivers"
