#include "camera/StandardDeviationHistory.h"

#include "camera/DepthNodeData.h"

#include <algorithm>
#include <cmath>
#include <cstring>

StandardDeviationHistory::Statistic StandardDeviationHistory::addFrame(DepthNodeData& node, const float* depthMap,
                                                                      int mapWidth, int mapHeight, int capacity)
{
    // A region drawn on a larger image than this one is cut to it, never read past the map.
    const RegionOfInterest roi = node.roi().clampedTo(mapWidth, mapHeight);
    if (!roi.isSet())
        return {};
    if (node.historyResetRequested.exchange(false) || roi != node.historyRoi) {
        node.historyCount = 0;
        node.historyIndex = 0;
        node.historyRoi = roi;
    }
    const uint32_t n = uint32_t(std::clamp(capacity, 1, DepthNodeData::HistoryLength));
    // A smaller capacity takes effect now: the count is clamped and the write index wraps.
    uint32_t count = std::min(node.historyCount.load(), n);
    if (node.historyIndex >= n)
        node.historyIndex = 0;

    float* slot = node.history[node.historyIndex];
    for (int r = 0; r < roi.height; ++r)
        std::memcpy(slot + size_t(r) * roi.width, depthMap + size_t(roi.y + r) * mapWidth + roi.x,
                    size_t(roi.width) * sizeof(float));
    count = std::min(count + 1, n);
    node.historyCount = count;
    node.historyIndex = node.historyIndex + 1 >= n ? 0 : node.historyIndex + 1;

    compute(node.history.data(), count, uint32_t(roi.width * roi.height), node.mean, node.deviation);
    return {node.deviation, roi};
}

void StandardDeviationHistory::requestReset(DepthNodeData& node)
{
    node.historyResetRequested = true;
}

void StandardDeviationHistory::compute(const float* const* frames, uint32_t count, uint32_t pixels, float* mean,
                                       float* result)
{
    if (count <= 1) {
        std::fill(result, result + pixels, 0.f);
        return;
    }
    // Slot by slot over all pixels, so that every pass reads each frame in order; each pixel's sums
    // still add its values in slot order, in single precision, as the per-pixel formula does.
    const float inverseCount = 1.f / float(count);
    const double inverseDegrees = double(1.f / float(count - 1));
    float* const sums = mean;
    std::fill(sums, sums + pixels, 0.f);
    for (uint32_t s = 0; s < count; ++s) {
        const float* __restrict frame = frames[s];
        for (uint32_t p = 0; p < pixels; ++p)
            sums[p] += frame[p];
    }
    for (uint32_t p = 0; p < pixels; ++p)
        mean[p] = sums[p] * inverseCount;
    float* const squares = result;
    std::fill(squares, squares + pixels, 0.f);
    for (uint32_t s = 0; s < count; ++s) {
        const float* __restrict frame = frames[s];
        for (uint32_t p = 0; p < pixels; ++p) {
            const float d = frame[p] - mean[p];
            squares[p] += d * d;
        }
    }
    for (uint32_t p = 0; p < pixels; ++p)
        result[p] = float(std::sqrt(double(squares[p])) * inverseDegrees);
}
