#pragma once

#include "RecordedDevice.h"

#include "Zerlane/plugin/TypeSpec.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Zerlane::playback {

// The property values of a recorded device or node, as recorded, and the type they make. Values that
// clients set are kept (a recording cannot change what it holds, but clients read back what they set and
// the delivery options take effect). Thread-safe.
class RecordedValues {
public:
    RecordedValues(const std::string& typeName, const std::vector<recording::RecordedDevice::Property>& properties,
                   std::string owner);

    std::shared_ptr<const plugin::TypeSpec> type() const { return m_type; }
    // Throws ArgumentException for a name the recording does not have.
    PropertyValue get(const std::string& name) const;
    void set(const std::string& name, const PropertyValue& value);
    // A boolean switch's value; true when the recording has no such switch.
    bool isOn(const std::string& name) const;

private:
    std::shared_ptr<const plugin::TypeSpec> m_type;
    std::string m_owner;
    mutable std::mutex m_mutex;
    std::map<std::string, PropertyValue> m_values;
};

} // namespace Zerlane::playback
