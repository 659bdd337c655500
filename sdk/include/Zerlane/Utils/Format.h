#pragma once

#include "Zerlane/Export.h"

#include <sstream>
#include <string>

namespace Zerlane::Utils {

// Message formatting: each bare "%" is replaced in turn by the next value given with operator%.
// "%%" stands for a literal "%". A "%" left without a value stays as it is; extra values are dropped.
//   std::string s = Format("Could not get property %: %") % name % message;
class ZERLANE_API Format {
public:
    explicit Format(std::string text);

    template <class T>
    Format& operator%(const T& value)
    {
        std::ostringstream stream;
        stream << value;
        return arg(stream.str());
    }
    Format& arg(const std::string& value);

    std::string str() const;
    operator std::string() const { return str(); }

private:
    std::string m_text;
    std::size_t m_next = 0; // where the search for the next bare "%" starts
};

} // namespace Zerlane::Utils
