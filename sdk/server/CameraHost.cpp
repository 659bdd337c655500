#include "CameraHost.h"

#include "ClientSession.h"
#include "ValueCodec.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Format.h"

#include <algorithm>

namespace Zerlane::server {

namespace {

// The client whose request is being executed on this thread: a change it caused is reported to the
// others only (its own library reports it locally).
thread_local const ClientSession* t_requester = nullptr;

class RequesterScope {
public:
    explicit RequesterScope(const ClientSession* session) { t_requester = session; }
    ~RequesterScope() { t_requester = nullptr; }
    RequesterScope(const RequesterScope&) = delete;
    RequesterScope& operator=(const RequesterScope&) = delete;
};

bool isConfigurationType(PropertyType type)
{
    return type == PropertyType::DepthConfiguration || type == PropertyType::ColorConfiguration
        || type == PropertyType::AudioConfiguration;
}

const plugin::PropertySpec& findSpec(const plugin::TypeSpec& type, const std::string& name)
{
    for (const plugin::PropertySpec& spec : type.properties) {
        if (spec.name == name)
            return spec;
    }
    throw ArgumentException(Utils::Format("unknown property '%' on type '%'") % name % type.name);
}

wire::Notice notice(wire::NoticeKind kind, uint32_t target, const std::string& name = {})
{
    wire::Notice n;
    n.set_kind(kind);
    n.set_target(target);
    n.set_name(name);
    return n;
}

} // namespace

CameraHost::CameraHost(Broadcast broadcast) : m_broadcast(std::move(broadcast)) {}

CameraHost::~CameraHost()
{
    close();
}

void CameraHost::open(std::vector<std::unique_ptr<plugin::Driver>> drivers)
{
    m_drivers = std::move(drivers);
    for (const auto& driver : m_drivers)
        driver->open(this);
}

void CameraHost::close()
{
    std::vector<std::pair<uint32_t, NodeEntry>> nodes;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (auto& [id, entry] : m_nodes)
            nodes.emplace_back(id, entry);
    }
    retireNodes(nodes);
    for (const auto& driver : m_drivers)
        driver->close();
    m_drivers.clear();
    std::lock_guard<std::mutex> lock(m_mutex);
    m_nodes.clear();
    m_devices.clear();
    m_nodeIds.clear();
    m_deviceIds.clear();
    m_controller.clear();
}

void CameraHost::retireNodes(const std::vector<std::pair<uint32_t, NodeEntry>>& nodes)
{
    std::lock_guard<std::mutex> streaming(m_streamMutex);
    for (const auto& [id, entry] : nodes) {
        for (const std::shared_ptr<ClientSession>& session : entry.streams)
            session->outbox().forgetNode(id);
        if (!entry.streams.empty()) {
            try {
                entry.driver->stop();
            } catch (const std::exception&) {
                // the node is gone or closing; nothing streams to anyone any more
            }
        }
    }
}

wire::NodeInfo CameraHost::describe(uint32_t id, const plugin::NodeDriver& node)
{
    wire::NodeInfo info;
    info.set_id(id);
    info.set_kind(static_cast<int32_t>(node.kind()));
    wire::ValueCodec::encode(*node.type(), *info.mutable_type());
    info.set_serial(node.serialNumber());
    info.set_vid(node.vid());
    info.set_pid(node.pid());
    info.set_revision(node.revision());
    info.set_media_interface(node.mediaInterface());
    info.set_unsupported_reason(node.unsupportedReason());
    return info;
}

wire::DeviceInfo CameraHost::describe(uint32_t id) const
{
    std::shared_ptr<plugin::DeviceDriver> device;
    std::vector<std::pair<uint32_t, std::shared_ptr<plugin::NodeDriver>>> nodes;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_devices.find(id);
        if (it == m_devices.end())
            return {};
        device = it->second.driver;
        for (uint32_t node : it->second.nodes)
            nodes.emplace_back(node, m_nodes.at(node).driver);
    }
    wire::DeviceInfo info;
    info.set_id(id);
    info.set_model(device->model());
    info.set_serial(device->serialNumber());
    info.set_usb_backend_version(device->usbBackendVersion());
    info.set_tof_controller_version(device->tofControllerVersion());
    wire::ValueCodec::encode(*device->type(), *info.mutable_type());
    for (const auto& [nodeId, node] : nodes)
        *info.add_nodes() = describe(nodeId, *node);
    return info;
}

std::vector<wire::DeviceInfo> CameraHost::devices() const
{
    std::vector<uint32_t> ids;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& [id, entry] : m_devices)
            ids.push_back(id);
    }
    std::vector<wire::DeviceInfo> result;
    for (uint32_t id : ids) {
        wire::DeviceInfo info = describe(id);
        if (info.id() != 0)
            result.push_back(std::move(info));
    }
    return result;
}

uint32_t CameraHost::registerNodeLocked(uint32_t device, const std::shared_ptr<plugin::NodeDriver>& node)
{
    const uint32_t id = m_nextId++;
    m_nodeIds[node.get()] = id;
    m_nodes[id] = NodeEntry {node, device, {}};
    m_devices[device].nodes.push_back(id);
    return id;
}

void CameraHost::deviceAdded(const std::shared_ptr<plugin::DeviceDriver>& driver)
{
    uint32_t id = 0;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!driver || m_deviceIds.count(driver.get()))
            return;
        id = m_nextId++;
        m_deviceIds[driver.get()] = id;
        m_devices[id].driver = driver;
        for (const std::shared_ptr<plugin::NodeDriver>& node : driver->nodes()) {
            if (node)
                registerNodeLocked(id, node);
        }
    }
    wire::Notice added = notice(wire::NOTICE_DEVICE_ADDED, id);
    *added.mutable_device() = describe(id);
    m_broadcast(added, nullptr);
}

void CameraHost::deviceRemoved(const std::shared_ptr<plugin::DeviceDriver>& driver)
{
    uint32_t id = 0;
    std::vector<std::pair<uint32_t, NodeEntry>> nodes;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_deviceIds.find(driver.get());
        if (it == m_deviceIds.end())
            return;
        id = it->second;
        m_deviceIds.erase(it);
        for (uint32_t node : m_devices[id].nodes) {
            auto entry = m_nodes.find(node);
            nodes.emplace_back(node, entry->second);
            m_nodeIds.erase(entry->second.driver.get());
            m_nodes.erase(entry);
            m_controller.erase(node);
        }
        m_devices.erase(id);
        m_controller.erase(id);
    }
    retireNodes(nodes);
    m_broadcast(notice(wire::NOTICE_DEVICE_REMOVED, id), nullptr);
}

void CameraHost::nodeAdded(plugin::DeviceDriver* device, const std::shared_ptr<plugin::NodeDriver>& node)
{
    uint32_t deviceId = 0;
    uint32_t id = 0;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_deviceIds.find(device);
        if (!node || it == m_deviceIds.end() || m_nodeIds.count(node.get()))
            return;
        deviceId = it->second;
        id = registerNodeLocked(deviceId, node);
    }
    wire::Notice added = notice(wire::NOTICE_NODE_ADDED, deviceId);
    *added.mutable_node() = describe(id, *node);
    m_broadcast(added, nullptr);
}

void CameraHost::nodeRemoved(plugin::DeviceDriver*, const std::shared_ptr<plugin::NodeDriver>& node)
{
    uint32_t id = 0;
    std::vector<std::pair<uint32_t, NodeEntry>> nodes;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_nodeIds.find(node.get());
        if (it == m_nodeIds.end())
            return;
        id = it->second;
        m_nodeIds.erase(it);
        auto entry = m_nodes.find(id);
        nodes.emplace_back(id, entry->second);
        std::vector<uint32_t>& siblings = m_devices[entry->second.device].nodes;
        siblings.erase(std::remove(siblings.begin(), siblings.end(), id), siblings.end());
        m_nodes.erase(entry);
        m_controller.erase(id);
    }
    retireNodes(nodes);
    m_broadcast(notice(wire::NOTICE_NODE_REMOVED, id), nullptr);
}

void CameraHost::propertyChanged(plugin::DeviceDriver* device, plugin::NodeDriver* node, const std::string& name)
{
    uint32_t id = 0;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (node) {
            if (auto it = m_nodeIds.find(node); it != m_nodeIds.end())
                id = it->second;
        } else if (auto it = m_deviceIds.find(device); it != m_deviceIds.end()) {
            id = it->second;
        }
    }
    if (id != 0)
        m_broadcast(notice(wire::NOTICE_PROPERTY_CHANGED, id, name), t_requester);
}

void CameraHost::transportFailed(const std::string& message)
{
    m_broadcast(notice(wire::NOTICE_TRANSPORT_FAILED, 0, message), nullptr);
}

CameraHost::Target CameraHost::target(uint32_t id) const
{
    Target t;
    t.id = id;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (auto device = m_devices.find(id); device != m_devices.end()) {
            t.device = device->second.driver;
            t.deviceId = id;
        } else if (auto node = m_nodes.find(id); node != m_nodes.end()) {
            t.node = node->second.driver;
            t.deviceId = node->second.device;
            t.device = m_devices.at(t.deviceId).driver;
        } else {
            throw InvalidOperationException("the device or node is no longer connected");
        }
    }
    t.description = "device " + t.device->serialNumber();
    if (t.node)
        t.description = NodeKind_toString(t.node->kind()) + " node of " + t.description;
    return t;
}

bool CameraHost::hasControlLocked(const ClientSession& session, const Target& target) const
{
    const auto holds = [&](uint32_t id) {
        auto it = m_controller.find(id);
        return it != m_controller.end() && it->second == &session;
    };
    return holds(target.id) || (target.node && holds(target.deviceId));
}

wire::Reply CameraHost::handle(ClientSession& session, const wire::Request& request)
{
    RequesterScope scope(&session);
    wire::Reply reply;
    reply.set_serial(request.serial());
    try {
        const Target t = target(request.target());
        const auto needNode = [&]() -> plugin::NodeDriver& {
            if (!t.node)
                throw ArgumentException(t.description + " is not a node");
            return *t.node;
        };
        const auto givenValue = [&]() {
            if (!request.has_value())
                throw ArgumentException("the request carries no value");
            return wire::ValueCodec::decode(request.value());
        };
        switch (request.op()) {
        case wire::OP_GET_PROPERTY:
            wire::ValueCodec::encode(getProperty(t, request.name()), *reply.mutable_value());
            break;
        case wire::OP_SET_PROPERTY: setProperty(session, t, request.name(), givenValue()); break;
        case wire::OP_GET_CONFIGURATIONS:
            for (const PropertyValue& value : needNode().configurations())
                wire::ValueCodec::encode(value, *reply.add_values());
            break;
        case wire::OP_GET_CONFIGURATION:
            wire::ValueCodec::encode(needNode().configuration(), *reply.mutable_value());
            break;
        case wire::OP_SET_CONFIGURATION: {
            plugin::NodeDriver& node = needNode();
            const PropertyValue value = givenValue();
            {
                std::lock_guard<std::mutex> lock(m_mutex);
                if (!hasControlLocked(session, t))
                    throw InvalidOperationException("control of " + t.description + " is needed to change its configuration");
            }
            node.setConfiguration(value);
            break;
        }
        case wire::OP_GET_RANGE: wire::ValueCodec::encode(needNode().range(), *reply.mutable_value()); break;
        case wire::OP_GET_OVERHEATING: wire::ValueCodec::encode(t.device->overheating(), *reply.mutable_value()); break;
        case wire::OP_GET_OVERHEATED: wire::ValueCodec::encode(t.device->overheated(), *reply.mutable_value()); break;
        case wire::OP_REQUEST_CONTROL: requestControl(session, t); break;
        case wire::OP_RELEASE_CONTROL: releaseControl(session, t); break;
        case wire::OP_START: needNode(); startStream(session, t); break;
        case wire::OP_STOP: needNode(); stopStream(session, t); break;
        default: throw ArgumentException("unknown operation " + std::to_string(request.op()));
        }
    } catch (...) {
        reply.clear_value();
        reply.clear_values();
        wire::ValueCodec::encodeCurrentException(reply);
    }
    return reply;
}

PropertyValue CameraHost::getProperty(const Target& t, const std::string& name)
{
    const plugin::PropertySpec& spec = findSpec(t.node ? *t.node->type() : *t.device->type(), name);
    PropertyValue value = t.node && isConfigurationType(spec.type) ? t.node->configuration()
                        : t.node                                ? t.node->getProperty(name)
                                                                : t.device->getProperty(name);
    if (static_cast<PropertyType>(value.index()) != spec.type)
        throw Exception(Utils::Format("% returned a value of the wrong type for property '%'") % t.description % name);
    return value;
}

void CameraHost::setProperty(ClientSession& session, const Target& t, const std::string& name, const PropertyValue& value)
{
    const plugin::PropertySpec& spec = findSpec(t.node ? *t.node->type() : *t.device->type(), name);
    if (static_cast<PropertyType>(value.index()) != spec.type) {
        throw ArgumentException(Utils::Format("cannot write a % value to property '%': it holds % values")
                                % PropertyType_toString(static_cast<PropertyType>(value.index())) % name
                                % PropertyType_toString(spec.type));
    }
    if (spec.readOnly)
        throw InvalidOperationException(Utils::Format("property '%' of % is read-only") % name % t.description);
    if (spec.requiresControl) {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!hasControlLocked(session, t))
            throw InvalidOperationException(Utils::Format("control of % is needed to change '%'") % t.description % name);
    }
    if (t.node && isConfigurationType(spec.type)) {
        t.node->setConfiguration(value); // the plug-in reports the new configuration itself
        return;
    }
    if (t.node)
        t.node->setProperty(name, value);
    else
        t.device->setProperty(name, value);
    m_broadcast(notice(wire::NOTICE_PROPERTY_CHANGED, t.id, name), &session);
}

void CameraHost::requestControl(ClientSession& session, const Target& t)
{
    bool refused = t.device->controlledByAnotherClient() || (t.node && t.node->controlledByAnotherClient());
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto heldByOther = [&](uint32_t id) {
        auto it = m_controller.find(id);
        return it != m_controller.end() && it->second != &session;
    };
    refused = refused || heldByOther(t.id) || (t.node && heldByOther(t.deviceId));
    if (!t.node) {
        for (uint32_t node : m_devices[t.id].nodes)
            refused = refused || heldByOther(node);
    }
    if (refused)
        throw TimeoutException("control of " + t.description + " is held by another client");
    m_controller[t.id] = &session;
}

void CameraHost::releaseControl(ClientSession& session, const Target& t)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_controller.find(t.id);
    if (it != m_controller.end() && it->second == &session)
        m_controller.erase(it);
}

void CameraHost::startStream(ClientSession& session, const Target& t)
{
    std::lock_guard<std::mutex> streaming(m_streamMutex);
    bool first = false;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_nodes.find(t.id);
        if (it == m_nodes.end())
            throw InvalidOperationException(t.description + " is no longer connected");
        auto& streams = it->second.streams;
        if (std::find(streams.begin(), streams.end(), session.shared_from_this()) != streams.end())
            return;
        first = streams.empty();
        streams.push_back(session.shared_from_this());
    }
    if (!first)
        return;
    try {
        t.node->start(this);
    } catch (...) {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (auto it = m_nodes.find(t.id); it != m_nodes.end())
            it->second.streams.clear();
        throw;
    }
}

void CameraHost::stopStream(ClientSession& session, const Target& t)
{
    std::lock_guard<std::mutex> streaming(m_streamMutex);
    bool last = false;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_nodes.find(t.id);
        if (it == m_nodes.end())
            return;
        auto& streams = it->second.streams;
        auto own = std::find(streams.begin(), streams.end(), session.shared_from_this());
        if (own == streams.end())
            return;
        streams.erase(own);
        last = streams.empty();
    }
    session.outbox().forgetNode(t.id);
    if (last)
        t.node->stop();
}

void CameraHost::release(ClientSession& session)
{
    std::lock_guard<std::mutex> streaming(m_streamMutex);
    std::vector<std::shared_ptr<plugin::NodeDriver>> idle;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (auto it = m_controller.begin(); it != m_controller.end();)
            it = it->second == &session ? m_controller.erase(it) : std::next(it);
        for (auto& [id, entry] : m_nodes) {
            auto own = std::find_if(entry.streams.begin(), entry.streams.end(),
                                    [&](const auto& s) { return s.get() == &session; });
            if (own == entry.streams.end())
                continue;
            entry.streams.erase(own);
            if (entry.streams.empty())
                idle.push_back(entry.driver);
        }
    }
    for (const std::shared_ptr<plugin::NodeDriver>& node : idle) {
        try {
            node->stop();
        } catch (const std::exception&) {
            // stopping for a client that has gone: nothing to report to anyone
        }
    }
}

std::size_t CameraHost::streamCount(uint32_t node) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_nodes.find(node);
    return it == m_nodes.end() ? 0 : it->second.streams.size();
}

void CameraHost::deliver(plugin::NodeDriver* node, wire::SampleCodec::Sample&& sample)
{
    uint32_t id = 0;
    std::vector<std::shared_ptr<ClientSession>> streams;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_nodeIds.find(node);
        if (it == m_nodeIds.end())
            return;
        id = it->second;
        streams = m_nodes[id].streams;
    }
    if (streams.empty())
        return;
    std::shared_ptr<const wire::SampleCodec::Encoded> encoded = wire::SampleCodec::encode(id, std::move(sample));
    for (const std::shared_ptr<ClientSession>& session : streams)
        session->outbox().offerSample(id, encoded);
}

void CameraHost::depthSample(plugin::NodeDriver* node, DepthNode::NewSampleReceivedData&& sample)
{
    deliver(node, wire::SampleCodec::Sample(std::move(sample)));
}

void CameraHost::colorSample(plugin::NodeDriver* node, ColorNode::NewSampleReceivedData&& sample)
{
    deliver(node, wire::SampleCodec::Sample(std::move(sample)));
}

void CameraHost::audioSample(plugin::NodeDriver* node, AudioNode::NewSampleReceivedData&& sample)
{
    deliver(node, wire::SampleCodec::Sample(std::move(sample)));
}

} // namespace Zerlane::server
