#pragma once

#include "camera/DeviceNodeBufferData.h"
#include "camera/RegionOfInterest.h"

#include <QMutex>

#include <Zerlane/Node.h>
#include <Zerlane/Property.h>

#include <atomic>
#include <cstdint>
#include <vector>

class BufferData;
class DeviceData;

// Mirror of one stream source of a device. The node owns one reference to each of its buffers.
// The event thread counts samples and marks data received while the GUI thread (statistics, stop)
// and the worker (configuration changes) read and reset them: those two are atomic. The flags
// `registered` and `controlled` and the buffer list belong to the GUI thread.
class NodeData : public DeviceNodeBufferData {
public:
    NodeData(const Zerlane::Node& node, DeviceData* device, const std::vector<Zerlane::PropertyBase>& properties);
    ~NodeData() override;

    // A node's activity also counts for its device.
    void incrementActive() override;
    void decrementActive() override;

    // The node's buffer of a kind (BufferData::Type), or null when it has none.
    BufferData* buffer(uint32_t type) const;

    Zerlane::Node node;
    DeviceData* device; // not reference-counted
    std::vector<Zerlane::PropertyBase> properties;
    std::vector<BufferData*> buffers;
    std::atomic<int32_t> sampleCount{0}; // sample events since the statistics last took the count
    bool registered = false;
    bool controlled = false;
    std::atomic<bool> dataReceived{false}; // a sample was taken since streaming or the configuration changed
    // The region chosen in the node's flat views, shared by all of them and by the standard-deviation
    // statistics of the event thread: set on the GUI thread, read anywhere, under the node's own lock.
    RegionOfInterest roi() const;
    void setRoi(const RegionOfInterest& roi);

private:
    mutable QMutex m_roiMutex;
    RegionOfInterest m_roi;
};
