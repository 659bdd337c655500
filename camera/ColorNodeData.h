#pragma once

#include "camera/NodeData.h"

#include <Zerlane/ColorNode.h>

#include <vector>

// A color node. The configuration list and the current configuration belong to the camera manager.
class ColorNodeData : public NodeData {
public:
    ColorNodeData(const Zerlane::Node& node, DeviceData* device, const std::vector<Zerlane::PropertyBase>& properties,
                  const std::vector<Zerlane::ColorNode::Configuration>* configurations,
                  Zerlane::ColorNode::Configuration* currentConfiguration);
    ~ColorNodeData() override;

    const std::vector<Zerlane::ColorNode::Configuration>* configurations;
    Zerlane::ColorNode::Configuration* currentConfiguration;
};
