#include "Zerlane/Utils/Format.h"

namespace Zerlane::Utils {

// m_text[0, m_next) is final text (values inserted, "%%" already reduced); the rest is still template.

Format::Format(std::string text) : m_text(std::move(text)) {}

Format& Format::arg(const std::string& value)
{
    std::size_t pos = m_next;
    while ((pos = m_text.find('%', pos)) != std::string::npos) {
        if (pos + 1 < m_text.size() && m_text[pos + 1] == '%') {
            m_text.erase(pos, 1); // "%%" becomes one literal "%"
            ++pos;
            continue;
        }
        m_text.replace(pos, 1, value);
        m_next = pos + value.size();
        return *this;
    }
    m_next = m_text.size(); // no placeholder left: the value is dropped
    return *this;
}

std::string Format::str() const
{
    std::string result = m_text.substr(0, m_next);
    for (std::size_t i = m_next; i < m_text.size(); ++i) {
        result += m_text[i];
        if (m_text[i] == '%' && i + 1 < m_text.size() && m_text[i + 1] == '%')
            ++i;
    }
    return result;
}

} // namespace Zerlane::Utils
