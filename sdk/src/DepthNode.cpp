#include "Zerlane/DepthNode.h"

#include "Checked.h"
#include "ConfigurationValues.h"
#include "NodeImpl.h"

#include "Zerlane/Interface.h"
#include "Zerlane/plugin/FaultInjector.h"

namespace Zerlane {

using plugin::FaultInjector;

namespace {
const char* const kHandle = "depth node";
}

std::vector<DepthNode::Configuration> DepthNode::getConfigurations() const
{
    FaultInjector::check("DepthNode::getConfigurations");
    const detail::NodeImpl& node = detail::checked(m_impl, kHandle);
    return detail::configurationsFrom<Configuration>(node.configurations(), node);
}

DepthNode::Configuration DepthNode::getConfiguration() const
{
    FaultInjector::check("DepthNode::getConfiguration");
    const detail::NodeImpl& node = detail::checked(m_impl, kHandle);
    return detail::configurationFrom<Configuration>(node.configuration(), node);
}

void DepthNode::setConfiguration(const Configuration& configuration)
{
    FaultInjector::check("DepthNode::setConfiguration");
    detail::checked(m_impl, kHandle).setConfiguration(PropertyValue(configuration));
}

Event<DepthNode, DepthNode::NewSampleReceivedData>& DepthNode::newSampleReceivedEvent()
{
    return detail::checked(m_impl, kHandle).depthSampleEvent();
}

std::string DepthNode::CameraMode_toString(CameraMode mode)
{
    switch (mode) {
    case CAMERA_MODE_CLOSE_RANGE: return "Close range";
    case CAMERA_MODE_LONG_RANGE: return "Long range";
    }
    return "Unknown";
}

float DepthNode::getRange() const
{
    FaultInjector::check("DepthNode::getRange");
    return detail::checked(m_impl, kHandle).driver().range();
}

bool DepthNode::getDepthMap3Planes() const
{
    FaultInjector::check("DepthNode::getDepthMap3Planes");
    return Property<bool>::getValue(Interface(*this), "depthMap3Planes");
}

bool DepthNode::getDepthMapFloatingPoint3Planes() const
{
    FaultInjector::check("DepthNode::getDepthMapFloatingPoint3Planes");
    return Property<bool>::getValue(Interface(*this), "depthMapFloatingPoint3Planes");
}

} // namespace Zerlane
