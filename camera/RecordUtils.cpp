#include "camera/RecordUtils.h"

#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"

DeviceData* deviceOf(DeviceNodeBufferData* record)
{
    if (!record)
        return nullptr;
    switch (record->kind()) {
    case DeviceNodeBufferData::KindDevice:
        return static_cast<DeviceData*>(record);
    case DeviceNodeBufferData::KindNode:
        return static_cast<NodeData*>(record)->device;
    case DeviceNodeBufferData::KindBuffer: {
        NodeData* node = static_cast<BufferData*>(record)->node;
        return node ? node->device : nullptr;
    }
    default:
        return nullptr;
    }
}

NodeData* nodeOf(DeviceNodeBufferData* record)
{
    if (!record)
        return nullptr;
    if (record->kind() == DeviceNodeBufferData::KindNode)
        return static_cast<NodeData*>(record);
    if (record->kind() == DeviceNodeBufferData::KindBuffer)
        return static_cast<BufferData*>(record)->node;
    return nullptr;
}
