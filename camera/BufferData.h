#pragma once

#include "camera/DeviceNodeBufferData.h"
#include "camera/DisplayImage.h"

#include <QMutex>
#include <QString>

#include <atomic>
#include <cstdint>

class BufferSubWindow;
class NodeData;

// One displayable stream of a node, double-buffered. The event thread fills slot `writeSlot` while
// readers use the other one (readSlot()); the two swap under dataMutex at the start of every sample.
// All memory is allocated at construction, at the kind's maximum size.
//
// Threads: the per-slot fields of the write slot belong to the event thread; those of the read slot
// are read under dataMutex (for a depth node's buffers, with the camera manager's buffers lock taken
// first). The fields that both sides touch outside that protocol are atomic: the frame count (counted
// by the event thread, taken by the statistics), noData (written per sample, read by the availability
// rules) and resetPending (set by the worker after a configuration change, taken by the GUI).
class BufferData : public DeviceNodeBufferData {
public:
    enum Type : uint32_t {
        Color = 0,
        Phase,
        Confidence,
        Depth,
        DepthFloatingPoint,
        Vertices,
        VerticesFloatingPoint,
        UV,
        StandardDeviation,
        Combined,
        Audio
    };

    static constexpr int DataAlignment = 32;

    BufferData(NodeData* node, uint32_t type);
    ~BufferData() override;

    // Bytes of each slot's data block for a kind; 0 for an unknown kind.
    static uint32_t capacity(uint32_t type);
    static QString typeName(uint32_t type);
    QString typeName() const;
    // The node property that switches a kind's map on ("enableDepthMap" ...); empty for kinds without
    // one. "Combined" names the phase map, "Standard Deviation" the floating-point depth map.
    static QString enableProperty(uint32_t type);

    // The last slot the writer finished.
    int readSlot() const { return 1 - writeSlot; }
    // Writer only: swaps the slots under dataMutex and returns the new write slot.
    int flipWriteSlot();

    NodeData* node; // the owner; not reference-counted
    uint32_t type;
    std::atomic<bool> noData{false};  // the last sample carried no data for this buffer
    const void* auxData = nullptr;    // Combined only: the confidence map that goes with the phase map
    int32_t writeSlot = 0;
    std::atomic<int32_t> frameCount{0}; // samples whose data was copied since the statistics last took it
    bool unavailable = false;           // GUI thread: the view shows a status text instead of the image
    bool recorded = false;
    QMutex dataMutex; // guards writeSlot

    bool sizeChanged[2] = {true, true}; // the writer resizes the slot's image before filling it
    std::atomic<bool> resetPending[2] = {false, false}; // the views start over at this slot
    uint8_t* data[2];                   // capacity(type) bytes each, 32-byte aligned
    uint32_t width[2] = {};
    uint32_t height[2] = {};
    DisplayImage image[2];
    uint64_t timeOfArrival[2] = {};
    uint64_t timeOfCapture[2] = {};
    uint64_t timeOfEvent[2] = {};
    uint32_t droppedFrames[2] = {};
    uint32_t totalDroppedFrames[2] = {};
    uint32_t audioMarker[2] = {}; // Audio: the column after the newest drawn one, of ImageWidth

    // View links, set by the views.
    BufferSubWindow* subWindow = nullptr;
    bool shown = false;
    bool displayed = false;
    bool reopening = false;
    bool notRegisteredShown = false;
};
