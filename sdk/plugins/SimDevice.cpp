#include "SimDevice.h"

#include "ListenerLink.h"
#include "SimAudioNode.h"
#include "SimCameraState.h"
#include "SimColorNode.h"
#include "SimDepthNode.h"
#include "SimUnsupportedNode.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Clock.h"

#include <algorithm>
#include <cmath>

namespace Zerlane::sim {

namespace {
constexpr int FanBlades = 3;
}

SimDevice::SimDevice(std::shared_ptr<SimCameraState> camera, std::shared_ptr<ListenerLink> link)
    : m_camera(std::move(camera)), m_link(std::move(link)), m_properties(declarations())
{
}

SimDevice::~SimDevice()
{
    stopAllNodes();
}

std::vector<PropertyDeclaration> SimDevice::declarations()
{
    using D = PropertyDeclaration;
    return {
        D::value("deviceName", std::string("ZT-Sim Camera")),
        D::value("ledEnabled", true),
        D::number("fanSpeed", int32_t(2400), 0, 6000),
        D::number("fanTargetTemperature", 40.f, 20.0, 70.0),
        D::measured("temperature", 38.5f),
        D::measured("firmwareVersion", std::string("1.4.2-sim")),
    };
}

std::shared_ptr<const plugin::TypeSpec> SimDevice::typeSpec()
{
    static const std::shared_ptr<const plugin::TypeSpec> type = PropertyTable::makeType(TypeName, declarations());
    return type;
}

const std::string& SimDevice::serial() const
{
    return m_camera->serial;
}

std::string SimDevice::serialNumber() const
{
    return m_camera->serial;
}

bool SimDevice::overheating() const
{
    return m_camera->overheating.load();
}

bool SimDevice::overheated() const
{
    return m_camera->overheated.load();
}

bool SimDevice::controlledByAnotherClient() const
{
    return m_camera->controlledByAnotherClient.load();
}

PropertyValue SimDevice::getProperty(const std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (name == "temperature") {
        // Drifts slowly around its working point; overheating shows.
        const double t = double(Utils::Clock::now()) * 1e-6;
        const float drift = float(1.5 * std::sin(2.0 * M_PI * std::fmod(t, 600.0) / 600.0));
        return 38.5f + drift + (overheating() ? 31.f : 0.f);
    }
    return m_properties.get(name);
}

void SimDevice::setProperty(const std::string& name, const PropertyValue& value)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_properties.set(name, value);
}

void SimDevice::reportPropertyChanged(const std::string& name)
{
    m_link->notify([&](plugin::DriverListener& listener) { listener.propertyChanged(this, nullptr, name); });
}

float SimDevice::fanHumFrequency() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return float(m_properties.value<int32_t>("fanSpeed")) / 60.f * FanBlades;
}

std::shared_ptr<SimNode> SimDevice::makeNode(NodeKind kind)
{
    const std::weak_ptr<SimDevice> self = weak_from_this();
    switch (kind) {
    case NodeKind::Depth:
        return std::make_shared<SimDepthNode>(m_camera, self, m_link);
    case NodeKind::Color:
        return std::make_shared<SimColorNode>(m_camera, self, m_link);
    case NodeKind::Audio:
        return std::make_shared<SimAudioNode>(m_camera, self, m_link);
    case NodeKind::Unsupported:
        return std::make_shared<SimUnsupportedNode>(m_camera, self, m_link);
    }
    throw ArgumentException("unknown node kind");
}

std::shared_ptr<SimNode> SimDevice::addNode(NodeKind kind)
{
    std::shared_ptr<SimNode> node = makeNode(kind);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_nodes.push_back(node);
    return node;
}

std::shared_ptr<SimNode> SimDevice::removeNode(NodeKind kind)
{
    std::shared_ptr<SimNode> node;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto it = std::find_if(m_nodes.begin(), m_nodes.end(),
                                     [kind](const std::shared_ptr<SimNode>& n) { return n->kind() == kind; });
        if (it == m_nodes.end())
            return nullptr;
        node = *it;
        m_nodes.erase(it);
    }
    node->stop();
    return node;
}

std::vector<std::shared_ptr<SimNode>> SimDevice::simNodes() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_nodes;
}

void SimDevice::stopAllNodes()
{
    for (const std::shared_ptr<SimNode>& node : simNodes())
        node->stop();
}

std::vector<std::shared_ptr<plugin::NodeDriver>> SimDevice::nodes() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return {m_nodes.begin(), m_nodes.end()};
}

FrameFormat SimDevice::colorFrameFormat() const
{
    for (const std::shared_ptr<SimNode>& node : simNodes())
        if (node->kind() == NodeKind::Color)
            return static_cast<const SimColorNode&>(*node).frameFormat();
    return FRAME_FORMAT_VGA;
}

CameraMode SimDevice::depthCameraMode() const
{
    for (const std::shared_ptr<SimNode>& node : simNodes())
        if (node->kind() == NodeKind::Depth)
            return static_cast<const SimDepthNode&>(*node).cameraMode();
    return CAMERA_MODE_LONG_RANGE;
}

} // namespace Zerlane::sim
