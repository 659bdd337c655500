#include "Zerlane/ColorNode.h"

#include "Checked.h"
#include "ConfigurationValues.h"
#include "NodeImpl.h"

#include "Zerlane/plugin/FaultInjector.h"

namespace Zerlane {

using plugin::FaultInjector;

namespace {
const char* const kHandle = "color node";
}

std::vector<ColorNode::Configuration> ColorNode::getConfigurations() const
{
    FaultInjector::check("ColorNode::getConfigurations");
    const detail::NodeImpl& node = detail::checked(m_impl, kHandle);
    return detail::configurationsFrom<Configuration>(node.configurations(), node);
}

ColorNode::Configuration ColorNode::getConfiguration() const
{
    FaultInjector::check("ColorNode::getConfiguration");
    const detail::NodeImpl& node = detail::checked(m_impl, kHandle);
    return detail::configurationFrom<Configuration>(node.configuration(), node);
}

void ColorNode::setConfiguration(const Configuration& configuration)
{
    FaultInjector::check("ColorNode::setConfiguration");
    detail::checked(m_impl, kHandle).setConfiguration(PropertyValue(configuration));
}

Event<ColorNode, ColorNode::NewSampleReceivedData>& ColorNode::newSampleReceivedEvent()
{
    return detail::checked(m_impl, kHandle).colorSampleEvent();
}

} // namespace Zerlane
