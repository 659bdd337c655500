#include "camera/DepthNodeData.h"

DepthNodeData::DepthNodeData(const Zerlane::Node& node, DeviceData* device,
                             const std::vector<Zerlane::PropertyBase>& properties,
                             const std::vector<Zerlane::DepthNode::Configuration>* configurations,
                             Zerlane::DepthNode::Configuration* currentConfiguration, float range)
    : NodeData(node, device, properties),
      configurations(configurations),
      currentConfiguration(currentConfiguration),
      range(range),
      history(HistoryLength, nullptr),
      mean(new float[FrameFloats]),
      deviation(new float[FrameFloats])
{
    for (float*& frame : history)
        frame = new float[FrameFloats];
}

DepthNodeData::~DepthNodeData()
{
    for (float* frame : history)
        delete[] frame;
    delete[] mean;
    delete[] deviation;
}
