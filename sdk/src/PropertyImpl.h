#pragma once

#include "Zerlane/Property.h"
#include "Zerlane/plugin/TypeSpec.h"

#include <string>

namespace Zerlane::detail {

// One declared property of a device or node type. Shared by every device or node of that type.
class PropertyImpl {
public:
    PropertyImpl(const plugin::PropertySpec& spec, std::string typeName)
        : m_spec(spec), m_typeName(std::move(typeName))
    {
    }

    const std::string& name() const { return m_spec.name; }
    PropertyType type() const { return m_spec.type; }
    bool isReadOnly() const { return m_spec.readOnly; }
    bool isHidden() const { return m_spec.hidden; }
    bool requiresControl() const { return m_spec.requiresControl; }
    // Name of the device or node type that declares it, for messages.
    const std::string& typeName() const { return m_typeName; }

private:
    plugin::PropertySpec m_spec;
    std::string m_typeName;
};

} // namespace Zerlane::detail
