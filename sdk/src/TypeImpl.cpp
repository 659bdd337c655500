#include "TypeImpl.h"

#include "PropertyImpl.h"

#include <map>
#include <mutex>

namespace Zerlane::detail {

namespace {

struct Registry {
    std::mutex mutex;
    // Plug-in types live as long as the process (the plug-in library is never unloaded), so entries
    // are kept for good.
    std::map<const plugin::TypeSpec*, std::shared_ptr<const TypeImpl>> types;
};

Registry& registry()
{
    static Registry instance;
    return instance;
}

std::shared_ptr<const plugin::TypeSpec> unknownSpec()
{
    static const auto spec = std::make_shared<const plugin::TypeSpec>(plugin::TypeSpec {"Unknown", {}});
    return spec;
}

} // namespace

std::shared_ptr<const TypeImpl> TypeImpl::forSpec(const std::shared_ptr<const plugin::TypeSpec>& spec)
{
    const std::shared_ptr<const plugin::TypeSpec> key = spec ? spec : unknownSpec();
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto& type = r.types[key.get()];
    if (!type)
        type = std::make_shared<const TypeImpl>(key);
    return type;
}

TypeImpl::TypeImpl(std::shared_ptr<const plugin::TypeSpec> spec) : m_spec(std::move(spec)), m_name(m_spec->name)
{
    m_properties.reserve(m_spec->properties.size());
    for (const plugin::PropertySpec& property : m_spec->properties)
        m_properties.emplace_back(std::make_shared<const PropertyImpl>(property, m_name));
}

PropertyBase TypeImpl::find(const std::string& name) const
{
    for (const PropertyBase& property : m_properties) {
        if (property.impl()->name() == name)
            return property;
    }
    return PropertyBase();
}

bool TypeImpl::declares(const PropertyBase& property) const
{
    for (const PropertyBase& own : m_properties) {
        if (own == property)
            return true;
    }
    return false;
}

} // namespace Zerlane::detail
