#include "Zerlane/AudioNode.h"

#include "Checked.h"
#include "ConfigurationValues.h"
#include "NodeImpl.h"

#include "Zerlane/plugin/FaultInjector.h"

namespace Zerlane {

using plugin::FaultInjector;

namespace {
const char* const kHandle = "audio node";
}

std::vector<AudioNode::Configuration> AudioNode::getConfigurations() const
{
    FaultInjector::check("AudioNode::getConfigurations");
    const detail::NodeImpl& node = detail::checked(m_impl, kHandle);
    return detail::configurationsFrom<Configuration>(node.configurations(), node);
}

AudioNode::Configuration AudioNode::getConfiguration() const
{
    FaultInjector::check("AudioNode::getConfiguration");
    const detail::NodeImpl& node = detail::checked(m_impl, kHandle);
    return detail::configurationFrom<Configuration>(node.configuration(), node);
}

void AudioNode::setConfiguration(const Configuration& configuration)
{
    FaultInjector::check("AudioNode::setConfiguration");
    detail::checked(m_impl, kHandle).setConfiguration(PropertyValue(configuration));
}

Event<AudioNode, AudioNode::NewSampleReceivedData>& AudioNode::newSampleReceivedEvent()
{
    return detail::checked(m_impl, kHandle).audioSampleEvent();
}

} // namespace Zerlane
