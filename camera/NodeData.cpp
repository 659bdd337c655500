#include "camera/NodeData.h"

#include "camera/BufferData.h"
#include "camera/DeviceData.h"

NodeData::NodeData(const Zerlane::Node& node, DeviceData* device, const std::vector<Zerlane::PropertyBase>& properties)
    : DeviceNodeBufferData(KindNode), node(node), device(device), properties(properties)
{
}

NodeData::~NodeData()
{
    for (BufferData*& buffer : buffers) {
        if (buffer)
            buffer->release();
        buffer = nullptr;
    }
}

BufferData* NodeData::buffer(uint32_t type) const
{
    for (BufferData* candidate : buffers) {
        if (candidate->type == type)
            return candidate;
    }
    return nullptr;
}

void NodeData::incrementActive()
{
    DeviceNodeBufferData::incrementActive();
    if (device)
        device->incrementActive();
}

void NodeData::decrementActive()
{
    DeviceNodeBufferData::decrementActive();
    if (device)
        device->decrementActive();
}

RegionOfInterest NodeData::roi() const
{
    QMutexLocker lock(&m_roiMutex);
    return m_roi;
}

void NodeData::setRoi(const RegionOfInterest& roi)
{
    QMutexLocker lock(&m_roiMutex);
    m_roi = roi;
}
