#pragma once

#include "Zerlane/AudioNode.h"
#include "Zerlane/ColorNode.h"
#include "Zerlane/DepthNode.h"

namespace Zerlane::plugin {

class NodeDriver;

// Where a streaming node hands its samples. Implemented by the library; callable from any thread.
// The plug-in fills the maps, the capture configuration and timeOfCapture; the library sets
// timeOfArrival and the dropped counts.
class SampleSink {
public:
    virtual ~SampleSink() = default;
    virtual void depthSample(NodeDriver* node, DepthNode::NewSampleReceivedData&& sample) = 0;
    virtual void colorSample(NodeDriver* node, ColorNode::NewSampleReceivedData&& sample) = 0;
    virtual void audioSample(NodeDriver* node, AudioNode::NewSampleReceivedData&& sample) = 0;
};

} // namespace Zerlane::plugin
