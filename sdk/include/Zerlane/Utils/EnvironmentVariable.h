#pragma once

#include "Zerlane/Export.h"

#include <string>

namespace Zerlane::Utils {

class ZERLANE_API EnvironmentVariable {
public:
    explicit EnvironmentVariable(std::string name);

    bool isSet() const;
    std::string getValue(const std::string& defaultValue = {}) const;
    // The value as a base-10 integer, or defaultValue when unset, empty or not entirely a number.
    int getIntValue(int defaultValue) const;

private:
    std::string m_name;
};

} // namespace Zerlane::Utils
