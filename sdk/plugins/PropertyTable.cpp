#include "PropertyTable.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Format.h"

#include <algorithm>
#include <utility>

namespace Zerlane::sim {

namespace {

bool numberOf(const PropertyValue& value, double& number)
{
    if (const int32_t* i = std::get_if<int32_t>(&value)) {
        number = *i;
        return true;
    }
    if (const float* f = std::get_if<float>(&value)) {
        number = *f;
        return true;
    }
    return false;
}

} // namespace

PropertyTable::PropertyTable(std::vector<PropertyDeclaration> declarations) : m_entries(std::move(declarations)) {}

std::shared_ptr<const plugin::TypeSpec> PropertyTable::makeType(const std::string& typeName,
                                                                const std::vector<PropertyDeclaration>& declarations)
{
    auto type = std::make_shared<plugin::TypeSpec>();
    type->name = typeName;
    for (const PropertyDeclaration& d : declarations)
        type->properties.push_back(d.spec);
    return type;
}

PropertyDeclaration& PropertyTable::find(const std::string& name)
{
    return const_cast<PropertyDeclaration&>(std::as_const(*this).find(name));
}

const PropertyDeclaration& PropertyTable::find(const std::string& name) const
{
    const auto it = std::find_if(m_entries.begin(), m_entries.end(),
                                 [&](const PropertyDeclaration& d) { return d.spec.name == name; });
    if (it == m_entries.end())
        throw ArgumentException(Utils::Format("unknown property '%'") % name);
    return *it;
}

const PropertyValue& PropertyTable::get(const std::string& name) const
{
    return find(name).initial;
}

void PropertyTable::set(const std::string& name, const PropertyValue& value)
{
    PropertyDeclaration& entry = find(name);
    if (value.index() != entry.initial.index())
        throw ArgumentException(Utils::Format("property '%' holds % values, not %") % name %
                                PropertyType_toString(entry.spec.type) %
                                PropertyType_toString(PropertyType(value.index())));
    double number = 0.0;
    if (entry.limited && numberOf(value, number) && (number < entry.minimum || number > entry.maximum))
        throw ArgumentException(Utils::Format("property '%' accepts values from % to %, not %") % name %
                                entry.minimum % entry.maximum % number);
    entry.initial = value;
}

void PropertyTable::store(const std::string& name, PropertyValue value)
{
    find(name).initial = std::move(value);
}

} // namespace Zerlane::sim
