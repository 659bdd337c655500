#pragma once

#include "NodeImpl.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Property.h"

#include <vector>

namespace Zerlane::detail {

// Plug-ins hand configurations as PropertyValues; a node kind's handle wants its own struct.

template <class Configuration>
Configuration configurationFrom(const PropertyValue& value, const NodeImpl& node)
{
    if (const auto* configuration = std::get_if<Configuration>(&value))
        return *configuration;
    throw Exception(node.description() + " reported a configuration of type "
                    + PropertyType_toString(static_cast<PropertyType>(value.index())) + " instead of "
                    + PropertyType_toString(propertyTypeOf<Configuration>()));
}

template <class Configuration>
std::vector<Configuration> configurationsFrom(const std::vector<PropertyValue>& values, const NodeImpl& node)
{
    std::vector<Configuration> configurations;
    configurations.reserve(values.size());
    for (const PropertyValue& value : values)
        configurations.push_back(configurationFrom<Configuration>(value, node));
    return configurations;
}

} // namespace Zerlane::detail
