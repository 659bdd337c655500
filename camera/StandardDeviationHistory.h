#pragma once

#include "camera/RegionOfInterest.h"

#include <cstdint>

class DepthNodeData;

// The ring of recent floating-point depth frames of a depth node's region of interest, and the
// per-pixel statistic computed over it. The arithmetic is kept exactly as the readout expects: single
// precision sums, and the root of the summed squared deviations divided by (count - 1).
class StandardDeviationHistory {
public:
    struct Statistic {
        const float* deviation = nullptr; // roi.width x roi.height floats; null when no region applies
        RegionOfInterest roi;             // the node's region as it fits the map
    };

    // Event thread. Copies the node's region (clamped to the map) of a floating-point depth map into
    // the ring of at most `capacity` frames and recomputes the statistic. The ring starts over when
    // the region differs from the one its frames were cut from, or when a reset was asked for.
    static Statistic addFrame(DepthNodeData& node, const float* depthMap, int mapWidth, int mapHeight, int capacity);
    // Any thread: the ring is emptied before the next frame is added (a new region is being drawn, the
    // configuration or the streaming changed).
    static void requestReset(DepthNodeData& node);
    // The statistic over `count` slots of `pixels` floats each.
    static void compute(const float* const* frames, uint32_t count, uint32_t pixels, float* mean, float* result);
};
