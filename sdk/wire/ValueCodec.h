#pragma once

#include "zerlane_wire.pb.h"

#include "Zerlane/Property.h"
#include "Zerlane/plugin/TypeSpec.h"

#include <exception>
#include <string>

namespace Zerlane::wire {

// Converts the library's values to and from their wire form. Decoding checks what a peer could get
// wrong (an unset value, a property type out of range, too many properties) and throws
// TransportException for it.
class ValueCodec {
public:
    static void encode(const PropertyValue& value, Value& out);
    static PropertyValue decode(const Value& value);

    static void encode(const plugin::TypeSpec& spec, TypeSpec& out);
    static plugin::TypeSpec decode(const TypeSpec& spec);

    // The exception in flight as a reply's error, and back.
    static void encodeCurrentException(Reply& reply);
    [[noreturn]] static void throwError(ErrorKind kind, const std::string& message);
};

} // namespace Zerlane::wire
