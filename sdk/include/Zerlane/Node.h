#pragma once

#include "Zerlane/Event.h"
#include "Zerlane/Export.h"
#include "Zerlane/Property.h"
#include "Zerlane/Type.h"

#include <memory>
#include <string>

namespace Zerlane {

class Device;
namespace detail {
class NodeImpl;
}

enum class NodeKind : int32_t {
    Unsupported = 0,
    Depth = 1,
    Color = 2,
    Audio = 3,
};

// "depth", "color", "audio", "unsupported": how messages name the kinds.
ZERLANE_API std::string NodeKind_toString(NodeKind kind);

// A property of a device or node changed (a write by any client, or a measured value).
struct PropertyChangedData {
    PropertyBase property;
};

// One stream source of a device. A handle whose device has gone away still copies and compares;
// calls that need the camera then throw InvalidOperationException.
class ZERLANE_API Node {
public:
    Node();
    explicit Node(std::shared_ptr<detail::NodeImpl> impl); // library use

    bool isSet() const;
    // False once the node (or its device) has been unplugged.
    bool isConnected() const;
    NodeKind kind() const;

    template <class T>
    bool is() const { return isSet() && kind() == T::Kind; }
    // Throws InvalidOperationException when the node is of another kind.
    template <class T>
    T as() const { return T(*this); }

    Type getType() const;
    Device getDevice() const;
    std::string getSerialNumber() const;
    int32_t getVID() const;
    int32_t getPID() const;
    int32_t getRevision() const;
    int32_t getMediaInterface() const;

    // Runs on the thread inside Context::run().
    Event<Node, PropertyChangedData>& propertyChangedEvent();

    bool operator==(const Node& other) const { return m_impl == other.m_impl; }
    bool operator!=(const Node& other) const { return m_impl != other.m_impl; }
    bool operator<(const Node& other) const { return m_impl < other.m_impl; }

    const std::shared_ptr<detail::NodeImpl>& impl() const { return m_impl; }

protected:
    Node(const Node& node, NodeKind required); // kind conversion; throws on a mismatch

    std::shared_ptr<detail::NodeImpl> m_impl;
};

} // namespace Zerlane
