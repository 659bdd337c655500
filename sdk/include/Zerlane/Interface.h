#pragma once

#include "Zerlane/Device.h"
#include "Zerlane/Export.h"
#include "Zerlane/Node.h"
#include "Zerlane/Type.h"

#include <memory>

namespace Zerlane {

namespace detail {
class InterfaceImpl;
}

// The common side of a device or a node through which properties are read and written.
class ZERLANE_API Interface {
public:
    Interface();
    Interface(const Device& device);
    Interface(const Node& node);

    bool isSet() const;
    bool isDevice() const;
    bool isNode() const;

    template <class T>
    bool is() const;
    // Throws InvalidOperationException when the interface is of the other kind.
    template <class T>
    T as() const;

    Type getType() const;

    bool operator==(const Interface& other) const { return m_impl == other.m_impl; }
    bool operator!=(const Interface& other) const { return m_impl != other.m_impl; }
    bool operator<(const Interface& other) const { return m_impl < other.m_impl; }

    const std::shared_ptr<detail::InterfaceImpl>& impl() const { return m_impl; }

private:
    Device toDevice() const;
    Node toNode() const;

    std::shared_ptr<detail::InterfaceImpl> m_impl;
};

template <> inline bool Interface::is<Device>() const { return isDevice(); }
template <> inline bool Interface::is<Node>() const { return isNode(); }
template <> inline Device Interface::as<Device>() const { return toDevice(); }
template <> inline Node Interface::as<Node>() const { return toNode(); }

} // namespace Zerlane
