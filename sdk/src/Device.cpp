#include "Zerlane/Device.h"

#include "Checked.h"
#include "DeviceImpl.h"
#include "NodeImpl.h"

#include "Zerlane/plugin/FaultInjector.h"

namespace Zerlane {

using plugin::FaultInjector;

namespace {
const char* const kHandle = "device";
}

Device::Device() = default;

Device::Device(std::shared_ptr<detail::DeviceImpl> impl) : m_impl(std::move(impl)) {}

std::string Device::Model_toString(Model model)
{
    switch (model) {
    case MODEL_ZT_SIM: return "ZT-Sim ToF";
    case MODEL_UNKNOWN: break;
    }
    return "Unknown";
}

bool Device::isSet() const
{
    return m_impl != nullptr;
}

bool Device::isConnected() const
{
    return m_impl && m_impl->isConnected();
}

std::vector<Node> Device::getNodes() const
{
    FaultInjector::check("Device::getNodes");
    detail::DeviceImpl& device = detail::checked(m_impl, kHandle);
    device.ensureConnected();
    std::vector<Node> nodes;
    for (const std::shared_ptr<detail::NodeImpl>& node : device.nodes())
        nodes.push_back(node->handle());
    return nodes;
}

std::string Device::getSerialNumber() const
{
    FaultInjector::check("Device::getSerialNumber");
    return detail::checked(m_impl, kHandle).driver().serialNumber();
}

Device::Model Device::getModel() const
{
    FaultInjector::check("Device::getModel");
    return detail::checked(m_impl, kHandle).driver().model();
}

int32_t Device::getUsbBackendVersion() const
{
    FaultInjector::check("Device::getUsbBackendVersion");
    return detail::checked(m_impl, kHandle).driver().usbBackendVersion();
}

int32_t Device::getTofControllerVersion() const
{
    FaultInjector::check("Device::getTofControllerVersion");
    return detail::checked(m_impl, kHandle).driver().tofControllerVersion();
}

bool Device::getOverheating() const
{
    FaultInjector::check("Device::getOverheating");
    return detail::checked(m_impl, kHandle).driver().overheating();
}

bool Device::getOverheated() const
{
    FaultInjector::check("Device::getOverheated");
    // Read once the camera has gone (it may have shut itself down), so no connection check.
    return detail::checked(m_impl, kHandle).lastDriver().overheated();
}

Type Device::getType() const
{
    return Type(detail::checked(m_impl, kHandle).type());
}

Event<Device, Device::NodeAddedData>& Device::nodeAddedEvent()
{
    return detail::checked(m_impl, kHandle).nodeAddedEvent();
}

Event<Device, Device::NodeRemovedData>& Device::nodeRemovedEvent()
{
    return detail::checked(m_impl, kHandle).nodeRemovedEvent();
}

Event<Device, Device::PropertyChangedData>& Device::propertyChangedEvent()
{
    return detail::checked(m_impl, kHandle).propertyChangedEvent();
}

} // namespace Zerlane
