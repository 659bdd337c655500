#pragma once

#include "zerlane_wire.pb.h"

#include "Zerlane/Property.h"

#include <string>

namespace Zerlane::detail {

class ServerConnection;

// The requests the remote drivers and the client runtime make, one line each at the call site.
class RemoteRequest {
public:
    static wire::Reply send(ServerConnection& connection, wire::Operation op, uint32_t target,
                            const std::string& name = {}, const PropertyValue* value = nullptr);
    static PropertyValue value(ServerConnection& connection, wire::Operation op, uint32_t target,
                               const std::string& name = {});
};

} // namespace Zerlane::detail
