#pragma once

#include "Zerlane/Configurations.h"
#include "Zerlane/Export.h"

#include <memory>
#include <string>
#include <variant>

namespace Zerlane {

class Interface;
namespace detail {
class PropertyImpl;
}

// The value types a property can hold. The order matches the alternatives of PropertyValue.
enum class PropertyType : int32_t {
    Bool = 0,
    Int = 1,
    Float = 2,
    String = 3,
    ExposureAuto = 4,
    DepthConfiguration = 5,
    ColorConfiguration = 6,
    AudioConfiguration = 7,
};

using PropertyValue = std::variant<bool, int32_t, float, std::string, ExposureAuto, DepthNodeConfiguration,
                                   ColorNodeConfiguration, AudioNodeConfiguration>;

template <class T>
constexpr PropertyType propertyTypeOf();
template <> constexpr PropertyType propertyTypeOf<bool>() { return PropertyType::Bool; }
template <> constexpr PropertyType propertyTypeOf<int32_t>() { return PropertyType::Int; }
template <> constexpr PropertyType propertyTypeOf<float>() { return PropertyType::Float; }
template <> constexpr PropertyType propertyTypeOf<std::string>() { return PropertyType::String; }
template <> constexpr PropertyType propertyTypeOf<ExposureAuto>() { return PropertyType::ExposureAuto; }
template <> constexpr PropertyType propertyTypeOf<DepthNodeConfiguration>() { return PropertyType::DepthConfiguration; }
template <> constexpr PropertyType propertyTypeOf<ColorNodeConfiguration>() { return PropertyType::ColorConfiguration; }
template <> constexpr PropertyType propertyTypeOf<AudioNodeConfiguration>() { return PropertyType::AudioConfiguration; }

ZERLANE_API std::string PropertyType_toString(PropertyType type);

// One named property of a device or node type. A default-constructed handle is "not set"
// (what Type::getProperty returns for a name the type does not have).
class ZERLANE_API PropertyBase {
public:
    PropertyBase();
    explicit PropertyBase(std::shared_ptr<const detail::PropertyImpl> impl); // library use

    bool isSet() const;
    std::string name() const;
    PropertyType type() const;
    // Read-only for everybody (a measured value such as "range").
    bool isReadOnly() const;
    // Read-only for this client on that device or node: read-only, or this client lacks the control
    // the property needs.
    bool isReadOnly(const Interface& iface) const;
    // Hidden properties are not listed by Type::getProperties() but can be looked up by name.
    bool isHidden() const;

    template <class P>
    bool is() const { return isSet() && type() == P::valueType(); }
    // Throws ArgumentException when the property holds another type.
    template <class P>
    P as() const { return P(*this); }

    // Untyped access. getValue throws ArgumentException when `expected` is not the property's type.
    PropertyValue getValue(const Interface& iface, PropertyType expected) const;
    void setValue(const Interface& iface, const PropertyValue& value) const;
    static PropertyValue getValue(const Interface& iface, const std::string& name, PropertyType expected);
    static void setValue(const Interface& iface, const std::string& name, const PropertyValue& value);

    bool operator==(const PropertyBase& other) const { return m_impl == other.m_impl; }
    bool operator!=(const PropertyBase& other) const { return m_impl != other.m_impl; }
    bool operator<(const PropertyBase& other) const { return m_impl < other.m_impl; }

    const std::shared_ptr<const detail::PropertyImpl>& impl() const { return m_impl; }

protected:
    std::shared_ptr<const detail::PropertyImpl> m_impl;
};

// A property of value type T: bool, int32_t, float, std::string, ExposureAuto or a node configuration.
// Reading or writing through the wrong type throws ArgumentException; writing a read-only property,
// or one that needs control this client does not hold, throws InvalidOperationException.
template <class T>
class Property : public PropertyBase {
public:
    Property() = default;
    explicit Property(const PropertyBase& base) : PropertyBase(base) { checkType(propertyTypeOf<T>()); }

    static constexpr PropertyType valueType() { return propertyTypeOf<T>(); }

    T getValue(const Interface& iface) const { return std::get<T>(PropertyBase::getValue(iface, valueType())); }
    void setValue(const Interface& iface, T value) const { PropertyBase::setValue(iface, PropertyValue(std::move(value))); }

    static T getValue(const Interface& iface, const std::string& name)
    {
        return std::get<T>(PropertyBase::getValue(iface, name, valueType()));
    }
    static void setValue(const Interface& iface, const std::string& name, T value)
    {
        PropertyBase::setValue(iface, name, PropertyValue(std::move(value)));
    }

private:
    void checkType(PropertyType expected) const;
};

// Throws ArgumentException naming the property and both types when a set handle has another type.
ZERLANE_API void checkPropertyType(const PropertyBase& property, PropertyType expected);

template <class T>
void Property<T>::checkType(PropertyType expected) const
{
    checkPropertyType(*this, expected);
}

} // namespace Zerlane
