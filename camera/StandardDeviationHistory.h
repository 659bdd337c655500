#pragma once

#include <cstdint>

class DepthNodeData;

// The ring of recent floating-point depth frames of a depth node's region of interest, and the
// per-pixel statistic computed over it. The arithmetic is kept exactly as the readout expects: single
// precision sums, and the root of the summed squared deviations divided by (count - 1).
class StandardDeviationHistory {
public:
    // Copies the ROI of a depth map (mapWidth floats a row) into the ring of at most `capacity` frames,
    // recomputes the statistic and returns it (roiWidth x roiHeight floats, the node's deviation block).
    static const float* addFrame(DepthNodeData& node, const float* depthMap, int mapWidth, int capacity);
    // Empties the ring (a new ROI is being drawn).
    static void clear(DepthNodeData& node);
    // The statistic over `count` slots of `pixels` floats each.
    static void compute(const float* const* frames, uint32_t count, uint32_t pixels, float* mean, float* result);
};
