#pragma once

#include "Zerlane/Node.h"
#include "Zerlane/Property.h"
#include "Zerlane/UnsupportedNode.h"
#include "Zerlane/plugin/TypeSpec.h"

#include <memory>
#include <string>
#include <vector>

namespace Zerlane::plugin {

class SampleSink;

// One stream source as a plug-in implements it. All methods may be called from any thread.
class NodeDriver {
public:
    virtual ~NodeDriver() = default;

    virtual NodeKind kind() const = 0;
    virtual std::shared_ptr<const TypeSpec> type() const = 0;
    virtual std::string serialNumber() const = 0;
    virtual int32_t vid() const = 0;
    virtual int32_t pid() const = 0;
    virtual int32_t revision() const = 0;
    virtual int32_t mediaInterface() const = 0;
    virtual UnsupportedNode::Reason unsupportedReason() const { return UnsupportedNode::REASON_UNKNOWN; }

    // Values of the properties of type(). The library has already checked the name, the value's type,
    // read-only and control; a plug-in throws ArgumentException for a value it does not accept.
    virtual PropertyValue getProperty(const std::string& name) const = 0;
    virtual void setProperty(const std::string& name, const PropertyValue& value) = 0;

    // Configurations, as values of the node kind's configuration type. setConfiguration throws
    // ArgumentException for one that is not offered. Unsupported nodes offer none.
    virtual std::vector<PropertyValue> configurations() const = 0;
    virtual PropertyValue configuration() const = 0;
    virtual void setConfiguration(const PropertyValue& configuration) = 0;
    // Depth nodes: range of the current mode, metres.
    virtual float range() const { return 0.f; }

    // Another client holds control of this node (the library refuses control with TimeoutException).
    virtual bool controlledByAnotherClient() const { return false; }

    // Starts producing samples into the sink, at the configured rate, until stop().
    virtual void start(SampleSink* sink) = 0;
    virtual void stop() = 0;
};

} // namespace Zerlane::plugin
