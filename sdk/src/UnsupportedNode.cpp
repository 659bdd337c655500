#include "Zerlane/UnsupportedNode.h"

#include "Checked.h"
#include "NodeImpl.h"

#include "Zerlane/plugin/FaultInjector.h"

namespace Zerlane {

std::string UnsupportedNode::Reason_toString(Reason reason)
{
    switch (reason) {
    case REASON_UNSUPPORTED_MEDIA: return "Unsupported media type";
    case REASON_FIRMWARE_UPDATE_REQUIRED: return "Firmware update required";
    case REASON_NO_DRIVER: return "No driver installed";
    case REASON_UNKNOWN: break;
    }
    return "Unknown reason";
}

UnsupportedNode::Reason UnsupportedNode::getReason() const
{
    plugin::FaultInjector::check("UnsupportedNode::getReason");
    return detail::checked(m_impl, "unsupported node").driver().unsupportedReason();
}

} // namespace Zerlane
