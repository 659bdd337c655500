#pragma once

#include "camera/RefCounted.h"

#include <QModelIndex>

#include <atomic>

#include <cstdint>

// Common base of the device, node and buffer records: the record kind, the tree model's index of the
// record and the active count (how many users currently use the record, e.g. open views).
class DeviceNodeBufferData : public RefCounted {
public:
    enum Kind : uint32_t { KindDevice = 0, KindNode = 1, KindBuffer = 2 };

    explicit DeviceNodeBufferData(uint32_t kind);
    ~DeviceNodeBufferData() override;

    uint32_t kind() const { return m_kind; }

    // Not locked: the counts are changed on the GUI thread only.
    virtual void incrementActive();
    virtual void decrementActive();
    uint32_t activeCount() const { return m_activeCount; }

    QModelIndex modelIndex;  // the record's index in the device tree model; invalid until the model sets it
    int32_t position = 0;    // place in the parent's list, for the tree model
    // Gone from the camera but still in use. Set on the GUI thread, read by the worker's restore.
    std::atomic<bool> disconnected{false};

protected:
    uint32_t m_kind;
    uint32_t m_activeCount = 0;
};
