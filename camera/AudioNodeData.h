#pragma once

#include "camera/NodeData.h"

#include <Zerlane/AudioNode.h>

#include <vector>

// A audio node. The configuration list and the current configuration belong to the camera manager.
class AudioNodeData : public NodeData {
public:
    AudioNodeData(const Zerlane::Node& node, DeviceData* device, const std::vector<Zerlane::PropertyBase>& properties,
                  const std::vector<Zerlane::AudioNode::Configuration>* configurations,
                  Zerlane::AudioNode::Configuration* currentConfiguration);
    ~AudioNodeData() override;

    const std::vector<Zerlane::AudioNode::Configuration>* configurations;
    Zerlane::AudioNode::Configuration* currentConfiguration;
};
