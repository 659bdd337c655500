#pragma once

#include "../src/Utils/BlockPool.h"
#include "ColorRenderer.h"
#include "SimNode.h"

#include <vector>

namespace Zerlane::sim {

// The simulated colour stream: the depth camera's scene seen from 2.5 cm to its right.
class SimColorNode : public SimNode {
public:
    static constexpr const char* TypeName = "ZT-Sim Color Node";

    SimColorNode(std::shared_ptr<SimCameraState> camera, std::weak_ptr<SimDevice> device,
                 std::shared_ptr<ListenerLink> link);
    ~SimColorNode() override;

    static std::shared_ptr<const plugin::TypeSpec> typeSpec();
    static std::vector<ColorNodeConfiguration> offeredConfigurations();
    static ColorNodeConfiguration defaultConfiguration();

    std::vector<PropertyValue> configurations() const override;
    FrameFormat frameFormat() const;

protected:
    void produceSample(plugin::SampleSink& sink, uint64_t captureTime) override;
    std::chrono::microseconds samplePeriod() const override;
    void checkOffered(const PropertyValue& configuration) const override;

private:
    static std::vector<PropertyDeclaration> declarations();
    Scene::Kind sceneKind() const;

    ColorRenderer m_renderer; // used under the production lock only
    Utils::BlockPool m_pool;
};

} // namespace Zerlane::sim
