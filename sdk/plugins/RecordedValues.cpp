#include "RecordedValues.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::playback {

RecordedValues::RecordedValues(const std::string& typeName,
                               const std::vector<recording::RecordedDevice::Property>& properties, std::string owner)
    : m_owner(std::move(owner))
{
    auto type = std::make_shared<plugin::TypeSpec>();
    type->name = typeName;
    for (const recording::RecordedDevice::Property& property : properties) {
        type->properties.push_back(property.spec);
        m_values[property.spec.name] = property.value;
    }
    m_type = type;
}

PropertyValue RecordedValues::get(const std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_values.find(name);
    if (found == m_values.end())
        throw ArgumentException(m_owner + " has no property " + name);
    return found->second;
}

void RecordedValues::set(const std::string& name, const PropertyValue& value)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_values[name] = value;
}

bool RecordedValues::isOn(const std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_values.find(name);
    const bool* value = found == m_values.end() ? nullptr : std::get_if<bool>(&found->second);
    return !value || *value;
}

} // namespace Zerlane::playback
