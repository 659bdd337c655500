#pragma once

#include "camera/NodeData.h"

#include <Zerlane/DepthNode.h>

#include <QMutex>

#include <vector>

// A depth node, with the ring of recent floating-point depth frames used by the standard-deviation
// statistics. The ring and the two result blocks are sized for a 640 x 480 frame whatever the node's
// resolution, and allocated once, at construction.
//
// The acceleration (written by every sample, shown by the GUI) and the range (followed on the event
// thread, read by the colouring and the panels) sit under the record's own lock.
class DepthNodeData : public NodeData {
public:
    static constexpr int HistoryLength = 100;
    static constexpr int FrameFloats = 640 * 480;
    static constexpr int FrameBytes = FrameFloats * int(sizeof(float)); // 1,228,800

    // `configurations` and `currentConfiguration` belong to the camera manager.
    DepthNodeData(const Zerlane::Node& node, DeviceData* device, const std::vector<Zerlane::PropertyBase>& properties,
                  const std::vector<Zerlane::DepthNode::Configuration>* configurations,
                  Zerlane::DepthNode::Configuration* currentConfiguration, float range);
    ~DepthNodeData() override;

    Zerlane::DepthNode::Acceleration acceleration() const;
    void setAcceleration(const Zerlane::DepthNode::Acceleration& acceleration);
    float range() const;
    void setRange(float range);

    const std::vector<Zerlane::DepthNode::Configuration>* configurations;
    Zerlane::DepthNode::Configuration* currentConfiguration;
    std::vector<float*> history; // HistoryLength blocks of FrameBytes, not zero-filled
    float* mean;
    float* deviation;
    // The ring belongs to the event thread; others read its count and ask for it to be emptied.
    uint32_t historyIndex = 0;                 // next slot of the ring
    std::atomic<uint32_t> historyCount{0};     // frames held
    RegionOfInterest historyRoi;               // the region the held frames were cut from
    std::atomic<bool> historyResetRequested{false};

private:
    mutable QMutex m_mutex;
    Zerlane::DepthNode::Acceleration m_acceleration{};
    float m_range;
};
