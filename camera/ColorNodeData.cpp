#include "camera/ColorNodeData.h"

ColorNodeData::ColorNodeData(const Zerlane::Node& node, DeviceData* device,
                             const std::vector<Zerlane::PropertyBase>& properties,
                             const std::vector<Zerlane::ColorNode::Configuration>* configurations,
                             Zerlane::ColorNode::Configuration* currentConfiguration)
    : NodeData(node, device, properties), configurations(configurations), currentConfiguration(currentConfiguration)
{
}

ColorNodeData::~ColorNodeData() = default;
