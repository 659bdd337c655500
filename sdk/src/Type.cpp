#include "Zerlane/Type.h"

#include "Checked.h"
#include "PropertyImpl.h"
#include "TypeImpl.h"

namespace Zerlane {

namespace {
const char* const kHandle = "type";
}

Type::Type() = default;

Type::Type(std::shared_ptr<const detail::TypeImpl> impl) : m_impl(std::move(impl)) {}

bool Type::isSet() const
{
    return m_impl != nullptr;
}

std::string Type::name() const
{
    return detail::checked(m_impl, kHandle).name();
}

std::vector<PropertyBase> Type::getProperties() const
{
    std::vector<PropertyBase> visible;
    for (const PropertyBase& property : detail::checked(m_impl, kHandle).allProperties()) {
        if (!property.impl()->isHidden())
            visible.push_back(property);
    }
    return visible;
}

std::vector<PropertyBase> Type::getAllProperties() const
{
    return detail::checked(m_impl, kHandle).allProperties();
}

PropertyBase Type::getProperty(const std::string& name) const
{
    return detail::checked(m_impl, kHandle).find(name);
}

} // namespace Zerlane
