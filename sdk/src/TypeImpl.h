#pragma once

#include "Zerlane/Property.h"
#include "Zerlane/plugin/TypeSpec.h"

#include <memory>
#include <string>
#include <vector>

namespace Zerlane::detail {

// The run-time type of a device or node. There is one TypeImpl per plug-in TypeSpec, so Type handles of
// two devices of the same type compare equal and so do their property handles.
class TypeImpl {
public:
    static std::shared_ptr<const TypeImpl> forSpec(const std::shared_ptr<const plugin::TypeSpec>& spec);

    explicit TypeImpl(std::shared_ptr<const plugin::TypeSpec> spec);

    const std::string& name() const { return m_name; }
    // Every property in declaration order, hidden ones included.
    const std::vector<PropertyBase>& allProperties() const { return m_properties; }
    // A property handle that is not set when the type has no property of that name.
    PropertyBase find(const std::string& name) const;
    bool declares(const PropertyBase& property) const;

private:
    std::shared_ptr<const plugin::TypeSpec> m_spec; // keeps the registry key alive
    std::string m_name;
    std::vector<PropertyBase> m_properties;
};

} // namespace Zerlane::detail
