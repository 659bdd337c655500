#include "Zerlane/Utils/EnvironmentVariable.h"

#include <charconv>
#include <cstdlib>

namespace Zerlane::Utils {

EnvironmentVariable::EnvironmentVariable(std::string name) : m_name(std::move(name)) {}

bool EnvironmentVariable::isSet() const
{
    return std::getenv(m_name.c_str()) != nullptr;
}

std::string EnvironmentVariable::getValue(const std::string& defaultValue) const
{
    const char* value = std::getenv(m_name.c_str());
    return value ? std::string(value) : defaultValue;
}

int EnvironmentVariable::getIntValue(int defaultValue) const
{
    const char* value = std::getenv(m_name.c_str());
    if (!value || !*value)
        return defaultValue;
    const std::string text(value);
    const char* first = text.data();
    const char* last = first + text.size();
    if (*first == '+')
        ++first; // an explicit sign is still a number; from_chars only takes '-'
    int result = 0;
    const auto [end, error] = std::from_chars(first, last, result, 10);
    if (error != std::errc() || end != last || first == last)
        return defaultValue;
    return result;
}

} // namespace Zerlane::Utils
