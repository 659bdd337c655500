#include "RemoteNodeDriver.h"

#include "RemoteRequest.h"
#include "ServerConnection.h"
#include "ValueCodec.h"
#include "WireLimits.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::detail {

RemoteNodeDriver::RemoteNodeDriver(std::shared_ptr<ServerConnection> connection, const wire::NodeInfo& info,
                                   std::shared_ptr<const plugin::TypeSpec> type)
    : m_connection(std::move(connection)),
      m_id(info.id()),
      m_kind(static_cast<NodeKind>(info.kind())),
      m_serial(info.serial()),
      m_vid(info.vid()),
      m_pid(info.pid()),
      m_revision(info.revision()),
      m_mediaInterface(info.media_interface()),
      m_reason(static_cast<UnsupportedNode::Reason>(info.unsupported_reason())),
      m_type(std::move(type))
{
}

void RemoteNodeDriver::deliver(wire::SampleCodec::Sample&& sample)
{
    plugin::SampleSink* sink = m_sink.load();
    if (!sink)
        return;
    if (auto* depth = std::get_if<DepthNode::NewSampleReceivedData>(&sample))
        sink->depthSample(this, std::move(*depth));
    else if (auto* color = std::get_if<ColorNode::NewSampleReceivedData>(&sample))
        sink->colorSample(this, std::move(*color));
    else if (auto* audio = std::get_if<AudioNode::NewSampleReceivedData>(&sample))
        sink->audioSample(this, std::move(*audio));
}

NodeKind RemoteNodeDriver::kind() const
{
    return m_kind;
}

std::shared_ptr<const plugin::TypeSpec> RemoteNodeDriver::type() const
{
    return m_type;
}

std::string RemoteNodeDriver::serialNumber() const
{
    m_connection->ensureOpen();
    return m_serial;
}

int32_t RemoteNodeDriver::vid() const
{
    m_connection->ensureOpen();
    return m_vid;
}

int32_t RemoteNodeDriver::pid() const
{
    m_connection->ensureOpen();
    return m_pid;
}

int32_t RemoteNodeDriver::revision() const
{
    m_connection->ensureOpen();
    return m_revision;
}

int32_t RemoteNodeDriver::mediaInterface() const
{
    m_connection->ensureOpen();
    return m_mediaInterface;
}

UnsupportedNode::Reason RemoteNodeDriver::unsupportedReason() const
{
    m_connection->ensureOpen();
    return m_reason;
}

PropertyValue RemoteNodeDriver::getProperty(const std::string& name) const
{
    return RemoteRequest::value(*m_connection, wire::OP_GET_PROPERTY, m_id, name);
}

void RemoteNodeDriver::setProperty(const std::string& name, const PropertyValue& value)
{
    RemoteRequest::send(*m_connection, wire::OP_SET_PROPERTY, m_id, name, &value);
}

std::vector<PropertyValue> RemoteNodeDriver::configurations() const
{
    const wire::Reply reply = RemoteRequest::send(*m_connection, wire::OP_GET_CONFIGURATIONS, m_id);
    if (reply.values_size() > wire::WireLimits::MAX_CONFIGURATIONS)
        throw TransportException("the server listed too many configurations");
    std::vector<PropertyValue> result;
    result.reserve(reply.values_size());
    for (const wire::Value& value : reply.values())
        result.push_back(wire::ValueCodec::decode(value));
    return result;
}

PropertyValue RemoteNodeDriver::configuration() const
{
    return RemoteRequest::value(*m_connection, wire::OP_GET_CONFIGURATION, m_id);
}

void RemoteNodeDriver::setConfiguration(const PropertyValue& configuration)
{
    RemoteRequest::send(*m_connection, wire::OP_SET_CONFIGURATION, m_id, {}, &configuration);
}

float RemoteNodeDriver::range() const
{
    return std::get<float>(RemoteRequest::value(*m_connection, wire::OP_GET_RANGE, m_id));
}

void RemoteNodeDriver::start(plugin::SampleSink* sink)
{
    m_sink = sink;
    try {
        RemoteRequest::send(*m_connection, wire::OP_START, m_id);
    } catch (...) {
        m_sink = nullptr;
        throw;
    }
}

void RemoteNodeDriver::stop()
{
    m_sink = nullptr;
    if (m_gone)
        return;
    try {
        RemoteRequest::send(*m_connection, wire::OP_STOP, m_id);
    } catch (const TransportException&) {
        // Without a connection nothing streams to this client any more.
    }
}

} // namespace Zerlane::detail
