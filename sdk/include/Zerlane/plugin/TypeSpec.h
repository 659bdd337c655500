#pragma once

#include "Zerlane/Property.h"

#include <string>
#include <vector>

namespace Zerlane::plugin {

// How a plug-in declares one property of a device or node type.
struct PropertySpec {
    std::string name;
    PropertyType type = PropertyType::Bool;
    bool readOnly = false;        // measured values ("range", temperatures)
    bool hidden = false;          // not listed by Type::getProperties() ("_noFan")
    bool requiresControl = true;  // false for per-client delivery options ("enable...Map", "...3Planes")
};

// A device or node type: its name and properties in display order. Plug-ins keep one instance per
// type and share it between all devices of that type.
struct TypeSpec {
    std::string name;
    std::vector<PropertySpec> properties;
};

} // namespace Zerlane::plugin
