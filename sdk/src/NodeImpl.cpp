#include "NodeImpl.h"

#include "DeviceImpl.h"
#include "PropertyImpl.h"
#include "TypeImpl.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Format.h"

namespace Zerlane::detail {

namespace {

bool isConfigurationType(PropertyType type)
{
    return type == PropertyType::DepthConfiguration || type == PropertyType::ColorConfiguration
        || type == PropertyType::AudioConfiguration;
}

const char* const kConfigurationProperty = "configuration";

} // namespace

NodeImpl::NodeImpl(std::weak_ptr<ContextImpl> context, const ContextImpl* owner, std::shared_ptr<DeviceImpl> device,
                   std::shared_ptr<plugin::NodeDriver> driver)
    : InterfaceImpl(std::move(context), owner, TypeImpl::forSpec(driver->type())),
      m_device(std::move(device)),
      m_driver(std::move(driver)),
      m_kind(m_driver->kind())
{
}

std::string NodeImpl::description() const
{
    return NodeKind_toString(m_kind) + " node of device " + m_device->serial();
}

bool NodeImpl::hasControl() const
{
    return isControlled() || m_device->isControlled();
}

bool NodeImpl::controlledByAnotherClient() const
{
    return m_driver->controlledByAnotherClient() || m_device->controlledByAnotherClient();
}

void NodeImpl::firePropertyChanged(const PropertyBase& property)
{
    m_propertyChanged.fire(handle(), PropertyChangedData {property});
}

Node NodeImpl::handle()
{
    return Node(std::static_pointer_cast<NodeImpl>(shared_from_this()));
}

plugin::NodeDriver& NodeImpl::driver() const
{
    ensureConnected();
    return *m_driver;
}

std::vector<PropertyValue> NodeImpl::configurations() const
{
    return driver().configurations();
}

PropertyValue NodeImpl::configuration() const
{
    return driver().configuration();
}

void NodeImpl::ensureControl(const std::string& what) const
{
    if (!hasControl())
        throw InvalidOperationException(Utils::Format("control of % is needed to change %") % description() % what);
}

void NodeImpl::setConfiguration(const PropertyValue& configuration)
{
    ensureControl("its configuration");
    driver().setConfiguration(configuration);
    const PropertyBase property = type()->find(kConfigurationProperty);
    if (property.isSet())
        postPropertyChanged(property);
}

bool NodeImpl::accepts(const SampleQueue::Sample& sample) const
{
    switch (m_kind) {
    case NodeKind::Depth: return std::holds_alternative<DepthNode::NewSampleReceivedData>(sample);
    case NodeKind::Color: return std::holds_alternative<ColorNode::NewSampleReceivedData>(sample);
    case NodeKind::Audio: return std::holds_alternative<AudioNode::NewSampleReceivedData>(sample);
    case NodeKind::Unsupported: break;
    }
    return false;
}

void NodeImpl::deliverNextSample()
{
    std::optional<SampleQueue::Sample> sample = m_samples.pop();
    if (!sample || !isStreaming())
        return;
    const Node self = handle();
    if (auto* depth = std::get_if<DepthNode::NewSampleReceivedData>(&*sample))
        m_depthSample.fire(DepthNode(self), *depth);
    else if (auto* color = std::get_if<ColorNode::NewSampleReceivedData>(&*sample))
        m_colorSample.fire(ColorNode(self), *color);
    else if (auto* audio = std::get_if<AudioNode::NewSampleReceivedData>(&*sample))
        m_audioSample.fire(AudioNode(self), *audio);
}

PropertyValue NodeImpl::driverProperty(const std::string& name) const
{
    // A node's configuration is a property too; the plug-in keeps it apart from the others.
    const PropertyBase property = type()->find(name);
    if (property.isSet() && isConfigurationType(property.type()))
        return m_driver->configuration();
    return m_driver->getProperty(name);
}

void NodeImpl::setDriverProperty(const std::string& name, const PropertyValue& value)
{
    const PropertyBase property = type()->find(name);
    if (property.isSet() && isConfigurationType(property.type()))
        m_driver->setConfiguration(value);
    else
        m_driver->setProperty(name, value);
}

} // namespace Zerlane::detail
