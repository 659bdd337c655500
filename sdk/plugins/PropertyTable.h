#pragma once

#include "PropertyDeclaration.h"

#include "Zerlane/plugin/TypeSpec.h"

#include <memory>
#include <string>
#include <vector>

namespace Zerlane::sim {

// The current values of one device's or node's properties. Not thread-safe: the owner locks.
class PropertyTable {
public:
    explicit PropertyTable(std::vector<PropertyDeclaration> declarations);

    // The type the library shows for these declarations (build it once per device or node type).
    static std::shared_ptr<const plugin::TypeSpec> makeType(const std::string& typeName,
                                                           const std::vector<PropertyDeclaration>& declarations);

    const PropertyValue& get(const std::string& name) const;
    // A write from a client: checks the name, the value's type and its range (ArgumentException).
    void set(const std::string& name, const PropertyValue& value);
    // A change made by the device itself (measured values, configuration): no checks.
    void store(const std::string& name, PropertyValue value);

    template <class T>
    T value(const std::string& name) const
    {
        return std::get<T>(get(name));
    }

private:
    PropertyDeclaration& find(const std::string& name);
    const PropertyDeclaration& find(const std::string& name) const;

    std::vector<PropertyDeclaration> m_entries; // current value in `initial`
};

} // namespace Zerlane::sim
