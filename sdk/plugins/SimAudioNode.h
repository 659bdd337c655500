#pragma once

#include "AudioSynth.h"
#include "../src/Utils/BlockPool.h"
#include "SimNode.h"

#include <vector>

namespace Zerlane::sim {

// The simulated microphones: one block of PCM every 50 ms.
class SimAudioNode : public SimNode {
public:
    static constexpr const char* TypeName = "ZT-Sim Audio Node";

    SimAudioNode(std::shared_ptr<SimCameraState> camera, std::weak_ptr<SimDevice> device,
                 std::shared_ptr<ListenerLink> link);
    ~SimAudioNode() override;

    static std::shared_ptr<const plugin::TypeSpec> typeSpec();
    static std::vector<AudioNodeConfiguration> offeredConfigurations();
    static AudioNodeConfiguration defaultConfiguration();

    std::vector<PropertyValue> configurations() const override;

protected:
    void produceSample(plugin::SampleSink& sink, uint64_t captureTime) override;
    std::chrono::microseconds samplePeriod() const override;
    void checkOffered(const PropertyValue& configuration) const override;

private:
    static std::vector<PropertyDeclaration> declarations();

    AudioSynth m_synth; // used under the production lock only
    Utils::BlockPool m_pool;
};

} // namespace Zerlane::sim
