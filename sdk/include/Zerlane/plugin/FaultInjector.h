#pragma once

#include "Zerlane/Export.h"

#include <string>

namespace Zerlane::plugin {

// Makes a named library operation throw, for tests. Every public operation of the library that can
// fail calls check() with its name first, "Class::method" as in the public headers, for example
// "Context::registerNode", "Context::requestControl", "Context::startNodes", "Context::stopNodes",
// "Device::getSerialNumber", "Device::getModel", "Node::getSerialNumber", "DepthNode::setConfiguration",
// "DepthNode::getConfigurations", "DepthNode::getRange", "PropertyBase::setValue", "PropertyBase::getValue".
// Also checked: "Context::createStandalone", "Context::create", "Context::run", "Context::getDevices",
// "Context::unregisterNode", "Context::releaseControl", "Device::getNodes", "Device::getUsbBackendVersion",
// "Device::getTofControllerVersion", "Device::getOverheating", "Device::getOverheated", "Node::getVID",
// "Node::getPID", "Node::getRevision", "Node::getMediaInterface", "<Kind>Node::getConfigurations",
// "<Kind>Node::getConfiguration", "<Kind>Node::setConfiguration" (Kind = Depth, Color, Audio),
// "DepthNode::getDepthMap3Planes", "DepthNode::getDepthMapFloatingPoint3Planes", "UnsupportedNode::getReason".
class ZERLANE_API FaultInjector {
public:
    enum class Kind { Exception, Argument, InvalidOperation, Timeout, Transport };

    // count < 0: every call until clear(); otherwise the next `count` calls.
    static void inject(const std::string& operation, Kind kind, const std::string& message, int count = -1);
    static void clear();
    static void check(const std::string& operation);
};

} // namespace Zerlane::plugin
