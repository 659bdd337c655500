#include "InterfaceImpl.h"

#include "ContextImpl.h"
#include "PropertyImpl.h"
#include "TypeImpl.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Format.h"

namespace Zerlane::detail {

InterfaceImpl::InterfaceImpl(std::weak_ptr<ContextImpl> context, const ContextImpl* owner,
                             std::shared_ptr<const TypeImpl> type)
    : m_context(std::move(context)), m_owner(owner), m_type(std::move(type))
{
}

InterfaceImpl::~InterfaceImpl() = default;

void InterfaceImpl::ensureConnected() const
{
    if (!isConnected())
        throw InvalidOperationException(description() + " is no longer connected");
}

PropertyValue InterfaceImpl::readProperty(const PropertyImpl& property) const
{
    ensureConnected();
    PropertyValue value = driverProperty(property.name());
    if (static_cast<PropertyType>(value.index()) != property.type()) {
        throw Exception(Utils::Format("% returned a % value for property '%', which holds % values")
                        % description() % PropertyType_toString(static_cast<PropertyType>(value.index()))
                        % property.name() % PropertyType_toString(property.type()));
    }
    return value;
}

void InterfaceImpl::writeProperty(const PropertyBase& property, const PropertyValue& value)
{
    ensureConnected();
    setDriverProperty(property.name(), value);
    postPropertyChanged(property);
}

void InterfaceImpl::postPropertyChanged(const PropertyBase& property)
{
    if (std::shared_ptr<ContextImpl> owner = context())
        owner->postPropertyChanged(shared_from_this(), property);
}

} // namespace Zerlane::detail
