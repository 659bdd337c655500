#include "SimUnsupportedNode.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::sim {

SimUnsupportedNode::SimUnsupportedNode(std::shared_ptr<SimCameraState> camera, std::weak_ptr<SimDevice> device,
                                       std::shared_ptr<ListenerLink> link)
    : SimNode({NodeKind::Unsupported, typeSpec(), 0x01ff, 3}, {}, std::move(camera), std::move(device),
              std::move(link))
{
}

SimUnsupportedNode::~SimUnsupportedNode() = default;

std::shared_ptr<const plugin::TypeSpec> SimUnsupportedNode::typeSpec()
{
    static const std::shared_ptr<const plugin::TypeSpec> type = PropertyTable::makeType(TypeName, {});
    return type;
}

UnsupportedNode::Reason SimUnsupportedNode::unsupportedReason() const
{
    return UnsupportedNode::REASON_FIRMWARE_UPDATE_REQUIRED;
}

std::vector<PropertyValue> SimUnsupportedNode::configurations() const
{
    return {};
}

PropertyValue SimUnsupportedNode::configuration() const
{
    throw InvalidOperationException("an unsupported node has no configuration (its firmware needs an update)");
}

void SimUnsupportedNode::start(plugin::SampleSink*) {}

void SimUnsupportedNode::stop() {}

void SimUnsupportedNode::produceSample(plugin::SampleSink&, uint64_t) {}

std::chrono::microseconds SimUnsupportedNode::samplePeriod() const
{
    return std::chrono::seconds(1);
}

void SimUnsupportedNode::checkOffered(const PropertyValue&) const
{
    throw ArgumentException("an unsupported node offers no configurations (its firmware needs an update)");
}

} // namespace Zerlane::sim
