#include "camera/AudioNodeData.h"

AudioNodeData::AudioNodeData(const Zerlane::Node& node, DeviceData* device,
                             const std::vector<Zerlane::PropertyBase>& properties,
                             const std::vector<Zerlane::AudioNode::Configuration>* configurations,
                             Zerlane::AudioNode::Configuration* currentConfiguration)
    : NodeData(node, device, properties), configurations(configurations), currentConfiguration(currentConfiguration)
{
}

AudioNodeData::~AudioNodeData() = default;
