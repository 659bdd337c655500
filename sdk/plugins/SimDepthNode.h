#pragma once

#include "DepthRenderer.h"
#include "SimNode.h"

#include <vector>

namespace Zerlane::sim {

// The simulated ToF depth stream: phase, confidence, depth, vertices and UV maps of the scene.
class SimDepthNode : public SimNode {
public:
    static constexpr const char* TypeName = "ZT-Sim Depth Node";

    SimDepthNode(std::shared_ptr<SimCameraState> camera, std::weak_ptr<SimDevice> device,
                 std::shared_ptr<ListenerLink> link);
    ~SimDepthNode() override;

    static std::shared_ptr<const plugin::TypeSpec> typeSpec();
    static std::vector<DepthNodeConfiguration> offeredConfigurations();
    static DepthNodeConfiguration defaultConfiguration();

    std::vector<PropertyValue> configurations() const override;
    float range() const override;
    CameraMode cameraMode() const;

protected:
    void produceSample(plugin::SampleSink& sink, uint64_t captureTime) override;
    std::chrono::microseconds samplePeriod() const override;
    void checkOffered(const PropertyValue& configuration) const override;
    std::optional<PropertyValue> measuredProperty(const std::string& name) const override;
    void configurationChanged(const PropertyValue& before, const PropertyValue& after) override;
    void reportMeasuredValues() override;

private:
    static std::vector<PropertyDeclaration> declarations();
    DepthRenderer::Settings currentSettings() const;

    DepthRenderer m_renderer; // used under the production lock only
};

} // namespace Zerlane::sim
