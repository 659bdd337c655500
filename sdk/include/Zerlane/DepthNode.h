#pragma once

#include "Zerlane/Configurations.h"
#include "Zerlane/Node.h"
#include "Zerlane/Types.h"

#include <vector>

namespace Zerlane {

class ZERLANE_API DepthNode : public Node {
public:
    static constexpr NodeKind Kind = NodeKind::Depth;
    using Configuration = DepthNodeConfiguration;
    using CameraMode = Zerlane::CameraMode;
    using Acceleration = Zerlane::Acceleration;

    // One depth sample. Maps that are switched off ("enable...Map" properties) have a null pointer.
    // With "depthMap3Planes" (or "depthMapFloatingPoint3Planes") on, that map holds three planes, all x
    // then all y then all z, and its size is 3 x width x height.
    struct NewSampleReceivedData {
        Pointer<int16_t> phaseMap;        // special codes 0x8001..0x8004 where no phase could be measured
        Pointer<int16_t> confidenceMap;
        Pointer<int16_t> depthMap;        // millimetres; 32001..32004 are special codes
        Pointer<float> depthMapFloatingPoint; // metres; -1..-4 are special codes
        Pointer<Vertex> vertices;
        Pointer<FPVertex> verticesFloatingPoint;
        Pointer<UV> uvMap;
        Acceleration acceleration;
        Configuration captureConfiguration;
        uint64_t timeOfCapture = 0;  // library clock, microseconds
        uint64_t timeOfArrival = 0;
        int32_t droppedSampleCount = 0;
        int32_t droppedSampleTotalCount = 0;
    };

    DepthNode() = default;
    explicit DepthNode(const Node& node) : Node(node, Kind) {}

    static std::string CameraMode_toString(CameraMode mode);

    std::vector<Configuration> getConfigurations() const;
    Configuration getConfiguration() const;
    // Throws ArgumentException for a configuration the node does not offer.
    void setConfiguration(const Configuration& configuration);
    // The range of the current camera mode, in metres (also the read-only property "range").
    float getRange() const;
    bool getDepthMap3Planes() const;
    bool getDepthMapFloatingPoint3Planes() const;

    // Runs on the thread inside Context::run(); delivered only while the node is registered and started.
    Event<DepthNode, NewSampleReceivedData>& newSampleReceivedEvent();
};

} // namespace Zerlane
