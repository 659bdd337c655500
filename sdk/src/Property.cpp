#include "Zerlane/Property.h"

#include "Checked.h"
#include "InterfaceImpl.h"
#include "PropertyImpl.h"
#include "TypeImpl.h"

#include "Zerlane/Interface.h"
#include "Zerlane/Utils/Format.h"
#include "Zerlane/plugin/FaultInjector.h"

namespace Zerlane {

using plugin::FaultInjector;
using Utils::Format;

namespace {

const detail::PropertyImpl& checkedProperty(const PropertyBase& property)
{
    return detail::checked(property.impl(), "property");
}

detail::InterfaceImpl& checkedTarget(const Interface& iface)
{
    return detail::checked(iface.impl(), "interface");
}

PropertyBase lookup(const detail::InterfaceImpl& target, const std::string& name)
{
    const PropertyBase property = target.type()->find(name);
    if (!property.isSet())
        throw ArgumentException(Format("unknown property '%' on type '%'") % name % target.type()->name());
    return property;
}

// A property handle of one type must not be used on a device or node of another type.
void ensureDeclared(const PropertyBase& property, const detail::InterfaceImpl& target)
{
    if (!target.type()->declares(property)) {
        throw ArgumentException(Format("property '%' of type '%' does not belong to % (type '%')")
                                % property.name() % property.impl()->typeName() % target.description()
                                % target.type()->name());
    }
}

PropertyValue readValue(const PropertyBase& property, const Interface& iface, PropertyType expected)
{
    const detail::PropertyImpl& impl = checkedProperty(property);
    if (impl.type() != expected) {
        throw ArgumentException(Format("cannot read property '%' as %: it holds % values") % impl.name()
                                % PropertyType_toString(expected) % PropertyType_toString(impl.type()));
    }
    const detail::InterfaceImpl& target = checkedTarget(iface);
    ensureDeclared(property, target);
    return target.readProperty(impl);
}

void writeValue(const PropertyBase& property, const Interface& iface, const PropertyValue& value)
{
    const detail::PropertyImpl& impl = checkedProperty(property);
    const auto given = static_cast<PropertyType>(value.index());
    if (impl.type() != given) {
        throw ArgumentException(Format("cannot write a % value to property '%': it holds % values")
                                % PropertyType_toString(given) % impl.name() % PropertyType_toString(impl.type()));
    }
    detail::InterfaceImpl& target = checkedTarget(iface);
    ensureDeclared(property, target);
    target.ensureConnected();
    if (impl.isReadOnly())
        throw InvalidOperationException(Format("property '%' of % is read-only") % impl.name() % target.description());
    if (impl.requiresControl() && !target.hasControl()) {
        throw InvalidOperationException(Format("control of % is needed to change '%'") % target.description()
                                        % impl.name());
    }
    target.writeProperty(property, value);
}

} // namespace

std::string PropertyType_toString(PropertyType type)
{
    switch (type) {
    case PropertyType::Bool: return "bool";
    case PropertyType::Int: return "int";
    case PropertyType::Float: return "float";
    case PropertyType::String: return "string";
    case PropertyType::ExposureAuto: return "ExposureAuto";
    case PropertyType::DepthConfiguration: return "DepthNode::Configuration";
    case PropertyType::ColorConfiguration: return "ColorNode::Configuration";
    case PropertyType::AudioConfiguration: return "AudioNode::Configuration";
    }
    return "unknown";
}

void checkPropertyType(const PropertyBase& property, PropertyType expected)
{
    if (property.isSet() && property.type() != expected) {
        throw ArgumentException(Format("property '%' holds % values, not %") % property.name()
                                % PropertyType_toString(property.type()) % PropertyType_toString(expected));
    }
}

PropertyBase::PropertyBase() = default;

PropertyBase::PropertyBase(std::shared_ptr<const detail::PropertyImpl> impl) : m_impl(std::move(impl)) {}

bool PropertyBase::isSet() const
{
    return m_impl != nullptr;
}

std::string PropertyBase::name() const
{
    return checkedProperty(*this).name();
}

PropertyType PropertyBase::type() const
{
    return checkedProperty(*this).type();
}

bool PropertyBase::isReadOnly() const
{
    return checkedProperty(*this).isReadOnly();
}

bool PropertyBase::isReadOnly(const Interface& iface) const
{
    const detail::PropertyImpl& impl = checkedProperty(*this);
    if (impl.isReadOnly())
        return true;
    return impl.requiresControl() && !(iface.impl() && iface.impl()->hasControl());
}

bool PropertyBase::isHidden() const
{
    return checkedProperty(*this).isHidden();
}

PropertyValue PropertyBase::getValue(const Interface& iface, PropertyType expected) const
{
    FaultInjector::check("PropertyBase::getValue");
    return readValue(*this, iface, expected);
}

void PropertyBase::setValue(const Interface& iface, const PropertyValue& value) const
{
    FaultInjector::check("PropertyBase::setValue");
    writeValue(*this, iface, value);
}

PropertyValue PropertyBase::getValue(const Interface& iface, const std::string& name, PropertyType expected)
{
    FaultInjector::check("PropertyBase::getValue");
    return readValue(lookup(checkedTarget(iface), name), iface, expected);
}

void PropertyBase::setValue(const Interface& iface, const std::string& name, const PropertyValue& value)
{
    FaultInjector::check("PropertyBase::setValue");
    writeValue(lookup(checkedTarget(iface), name), iface, value);
}

} // namespace Zerlane
