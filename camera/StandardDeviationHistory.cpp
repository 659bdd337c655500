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
    const float inverseCount = 1.f / float(count);
    const double inverseDegrees = double(1.f / float(count - 1));
    for (uint32_t p = 0; p < pixels; ++p) {
        float sum = 0.f;
        for (uint32_t s = 0; s < count; ++s)
            sum += frames[s][p];
        mean[p] = sum * inverseCount;
    }
    for (uint32_t p = 0; p < pixels; ++p) {
        float squares = 0.f;
        for (uint32_t s = 0; s < count; ++s) {
            const float d = frames[s][p] - mean[p];
            squares += d * d;
        }
        result[p] = float(std::sqrt(double(squares)) * inverseDegrees);
    }
}
