#pragma once

#include "camera/DeviceNodeBufferData.h"

#include <Zerlane/Node.h>
#include <Zerlane/Property.h>

#include <vector>

class BufferData;
class DeviceData;

// Mirror of one stream source of a device. The node owns one reference to each of its buffers.
class NodeData : public DeviceNodeBufferData {
public:
    NodeData(const Zerlane::Node& node, DeviceData* device, const std::vector<Zerlane::PropertyBase>& properties);
    ~NodeData() override;

    // A node's activity also counts for its device.
    void incrementActive() override;
    void decrementActive() override;

    Zerlane::Node node;
    DeviceData* device; // not reference-counted
    std::vector<Zerlane::PropertyBase> properties;
    std::vector<BufferData*> buffers;
    int32_t sampleCount = 0; // sample events since the last statistics tick
    int32_t reserved = 0;
    bool registered = false;
    bool controlled = false;
    bool dataReceived = false;
    // Region of the standard-deviation statistics; roiX < 0 means none is selected.
    int32_t roiX = -1, roiY = -1, roiWidth = -1, roiHeight = -1;
};
