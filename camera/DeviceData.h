#pragma once

#include "camera/DeviceNodeBufferData.h"

#include <Zerlane/Device.h>
#include <Zerlane/Property.h>

#include <atomic>
#include <vector>

class BufferData;
class NodeData;

// Mirror of one camera. The camera manager fills `nodes`; the node records point back here.
class DeviceData : public DeviceNodeBufferData {
public:
    DeviceData(const Zerlane::Device& device, const std::vector<Zerlane::PropertyBase>& properties);
    ~DeviceData() override;

    // The colour image of the camera: the Color buffer of its colour node (the first, should there be
    // several), or null when it has none.
    BufferData* colorBuffer() const;

    Zerlane::Device device;
    std::vector<Zerlane::PropertyBase> properties; // as the service listed them when the device appeared
    std::vector<NodeData*> nodes;
    bool registered = false;
    std::atomic<bool> controlled{false}; // this program holds control (read by the worker's restore)
    bool dataReceived = false; // cleared by a successful property set
};
