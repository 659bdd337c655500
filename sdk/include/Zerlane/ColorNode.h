#pragma once

#include "Zerlane/Configurations.h"
#include "Zerlane/Node.h"
#include "Zerlane/Types.h"

#include <vector>

namespace Zerlane {

class ZERLANE_API ColorNode : public Node {
public:
    static constexpr NodeKind Kind = NodeKind::Color;
    using Configuration = ColorNodeConfiguration;

    struct NewSampleReceivedData {
        // YUY2 (2 bytes a pixel) or, uncompressed, B, G, R (3 bytes a pixel), by the capture configuration.
        Pointer<uint8_t> colorMap;
        Configuration captureConfiguration;
        uint64_t timeOfCapture = 0;
        uint64_t timeOfArrival = 0;
        int32_t droppedSampleCount = 0;
        int32_t droppedSampleTotalCount = 0;
    };

    ColorNode() = default;
    explicit ColorNode(const Node& node) : Node(node, Kind) {}

    std::vector<Configuration> getConfigurations() const;
    Configuration getConfiguration() const;
    void setConfiguration(const Configuration& configuration);

    Event<ColorNode, NewSampleReceivedData>& newSampleReceivedEvent();
};

} // namespace Zerlane
