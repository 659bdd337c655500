#include "RemoteRequest.h"

#include "ServerConnection.h"
#include "ValueCodec.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::detail {

wire::Reply RemoteRequest::send(ServerConnection& connection, wire::Operation op, uint32_t target,
                                const std::string& name, const PropertyValue* value)
{
    wire::Request request;
    request.set_op(op);
    request.set_target(target);
    request.set_name(name);
    if (value)
        wire::ValueCodec::encode(*value, *request.mutable_value());
    return connection.call(std::move(request));
}

PropertyValue RemoteRequest::value(ServerConnection& connection, wire::Operation op, uint32_t target,
                                   const std::string& name)
{
    const wire::Reply reply = send(connection, op, target, name);
    if (!reply.has_value())
        throw TransportException("the server answered without a value");
    return wire::ValueCodec::decode(reply.value());
}

} // namespace Zerlane::detail
