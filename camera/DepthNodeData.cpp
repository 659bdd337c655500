#include "camera/DepthNodeData.h"

DepthNodeData::DepthNodeData(const Zerlane::Node& node, DeviceData* device,
                             const std::vector<Zerlane::PropertyBase>& properties,
                             const std::vector<Zerlane::DepthNode::Configuration>* configurations,
                             Zerlane::DepthNode::Configuration* currentConfiguration, float range)
    : NodeData(node, device, properties),
      configurations(configurations),
      currentConfiguration(currentConfiguration),
      history(HistoryLength, nullptr),
      mean(new float[FrameFloats]),
      deviation(new float[FrameFloats]),
      m_range(range)
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

Zerlane::DepthNode::Acceleration DepthNodeData::acceleration() const
{
    QMutexLocker lock(&m_mutex);
    return m_acceleration;
}

void DepthNodeData::setAcceleration(const Zerlane::DepthNode::Acceleration& acceleration)
{
    QMutexLocker lock(&m_mutex);
    m_acceleration = acceleration;
}

float DepthNodeData::range() const
{
    QMutexLocker lock(&m_mutex);
    return m_range;
}

void DepthNodeData::setRange(float range)
{
    QMutexLocker lock(&m_mutex);
    m_range = range;
}
