#pragma once

#include "SimNode.h"

namespace Zerlane::sim {

// A node the camera reports but cannot drive until its firmware is updated: no configurations, no samples.
class SimUnsupportedNode : public SimNode {
public:
    static constexpr const char* TypeName = "ZT-Sim Unsupported Node";

    SimUnsupportedNode(std::shared_ptr<SimCameraState> camera, std::weak_ptr<SimDevice> device,
                       std::shared_ptr<ListenerLink> link);
    ~SimUnsupportedNode() override;

    static std::shared_ptr<const plugin::TypeSpec> typeSpec();

    UnsupportedNode::Reason unsupportedReason() const override;
    std::vector<PropertyValue> configurations() const override;
    PropertyValue configuration() const override;
    // Streaming an unsupported node is allowed and yields nothing, as with a real camera.
    void start(plugin::SampleSink* sink) override;
    void stop() override;

protected:
    void produceSample(plugin::SampleSink& sink, uint64_t captureTime) override;
    std::chrono::microseconds samplePeriod() const override;
    void checkOffered(const PropertyValue& configuration) const override;
};

} // namespace Zerlane::sim
