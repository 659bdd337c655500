#pragma once

#include "Zerlane/Configurations.h"
#include "Zerlane/Node.h"
#include "Zerlane/Types.h"

#include <vector>

namespace Zerlane {

class ZERLANE_API AudioNode : public Node {
public:
    static constexpr NodeKind Kind = NodeKind::Audio;
    using Configuration = AudioNodeConfiguration;

    struct NewSampleReceivedData {
        // Interleaved little-endian PCM; size() is in bytes. One sample carries 1/20 s of sound.
        Pointer<uint8_t> audioData;
        AudioFormat audioFormat;
        uint64_t timeOfCapture = 0;
        uint64_t timeOfArrival = 0;
        int32_t droppedSampleCount = 0;
        int32_t droppedSampleTotalCount = 0;
    };

    AudioNode() = default;
    explicit AudioNode(const Node& node) : Node(node, Kind) {}

    std::vector<Configuration> getConfigurations() const;
    Configuration getConfiguration() const;
    void setConfiguration(const Configuration& configuration);

    Event<AudioNode, NewSampleReceivedData>& newSampleReceivedEvent();
};

} // namespace Zerlane
