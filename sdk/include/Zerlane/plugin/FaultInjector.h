#pragma once

#include "Zerlane/Export.h"

#include <string>

namespace Zerlane::plugin {

// Makes a named library operation throw, for tests. Every public operation of the library that can
// fail calls check() with its name first, "Class::method" as in the public headers, for example
// "Context::registerNode", "Context::requestControl", "Context::startNodes", "Context::stopNodes",
// "Device::getSerialNumber", "Device::getModel", "Node::getSerialNumber", "DepthNode::setConfiguration",
// "DepthNode::getConfigurations", "DepthNode::getRange", "PropertyBase::setValue", "PropertyBase::getValue".
class ZERLANE_API FaultInjector {
public:
    enum class Kind { Exception, Argument, InvalidOperation, Timeout, Transport };

    // count < 0: every call until clear(); otherwise the next `count` calls.
    static void inject(const std::string& operation, Kind kind, const std::string& message, int count = -1);
    static void clear();
    static void check(const std::string& operation);
};

} // namespace Zerlane::plugin
