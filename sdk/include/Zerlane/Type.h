#pragma once

#include "Zerlane/Export.h"
#include "Zerlane/Property.h"

#include <memory>
#include <string>
#include <vector>

namespace Zerlane {

namespace detail {
class TypeImpl;
}

// The run-time type of a device or node: its name and its property list.
class ZERLANE_API Type {
public:
    Type();
    explicit Type(std::shared_ptr<const detail::TypeImpl> impl); // library use

    bool isSet() const;
    std::string name() const;
    // The visible properties, in the order the device declares them (hidden ones left out).
    std::vector<PropertyBase> getProperties() const;
    // Every property in declaration order, hidden ones included (for diagnostic tools).
    std::vector<PropertyBase> getAllProperties() const;
    // Any property by name, hidden ones included; a handle that is not set when there is none.
    PropertyBase getProperty(const std::string& name) const;

    bool operator==(const Type& other) const { return m_impl == other.m_impl; }
    bool operator!=(const Type& other) const { return m_impl != other.m_impl; }
    bool operator<(const Type& other) const { return m_impl < other.m_impl; }

    const std::shared_ptr<const detail::TypeImpl>& impl() const { return m_impl; }

private:
    std::shared_ptr<const detail::TypeImpl> m_impl;
};

} // namespace Zerlane
