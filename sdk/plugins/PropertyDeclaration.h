#pragma once

#include "Zerlane/plugin/TypeSpec.h"

#include <string>

namespace Zerlane::sim {

// One property of a simulated device or node: how the library sees it, its value at power-up and, for
// numbers, the values it accepts.
struct PropertyDeclaration {
    plugin::PropertySpec spec;
    PropertyValue initial;
    bool limited = false;
    double minimum = 0.0;
    double maximum = 0.0;

    static PropertyDeclaration value(std::string name, PropertyValue initial, bool requiresControl = true)
    {
        PropertyDeclaration d;
        d.spec.name = std::move(name);
        d.spec.type = PropertyType(initial.index());
        d.spec.requiresControl = requiresControl;
        d.initial = std::move(initial);
        return d;
    }
    static PropertyDeclaration number(std::string name, PropertyValue initial, double minimum, double maximum)
    {
        PropertyDeclaration d = value(std::move(name), std::move(initial));
        d.limited = true;
        d.minimum = minimum;
        d.maximum = maximum;
        return d;
    }
    static PropertyDeclaration measured(std::string name, PropertyValue initial)
    {
        PropertyDeclaration d = value(std::move(name), std::move(initial));
        d.spec.readOnly = true;
        return d;
    }
    PropertyDeclaration& hidden()
    {
        spec.hidden = true;
        return *this;
    }
};

} // namespace Zerlane::sim
