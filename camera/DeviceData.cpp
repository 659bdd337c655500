#include "camera/DeviceData.h"

#include "camera/BufferData.h"
#include "camera/NodeData.h"

DeviceData::DeviceData(const Zerlane::Device& device, const std::vector<Zerlane::PropertyBase>& properties)
    : DeviceNodeBufferData(KindDevice), device(device), properties(properties)
{
}

DeviceData::~DeviceData() = default;

BufferData* DeviceData::colorBuffer() const
{
    for (const NodeData* node : nodes) {
        if (BufferData* buffer = node->buffer(BufferData::Color))
            return buffer;
    }
    return nullptr;
}
