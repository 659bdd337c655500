#include "camera/StandardDeviationHistory.h"

#include "camera/DepthNodeData.h"

#include <algorithm>
#include <cmath>
#include <cstring>

const float* StandardDeviationHistory::addFrame(DepthNodeData& node, const float* depthMap, int mapWidth, int capacity)
{
    const uint32_t n = uint32_t(std::clamp(capacity, 1, DepthNodeData::HistoryLength));
    // A smaller capacity takes effect now: the count is clamped and the write index wraps.
    node.historyCount = std::min(node.historyCount, n);
    if (node.historyIndex >= n)
        node.historyIndex = 0;

    const int w = node.roiWidth, h = node.roiHeight;
    float* slot = node.history[node.historyIndex];
    for (int r = 0; r < h; ++r)
        std::memcpy(slot + size_t(r) * w, depthMap + size_t(node.roiY + r) * mapWidth + node.roiX, size_t(w) * sizeof(float));
    node.historyCount = std::min(node.historyCount + 1, n);
    node.historyIndex = node.historyIndex + 1 >= n ? 0 : node.historyIndex + 1;

    compute(node.history.data(), node.historyCount, uint32_t(w * h), node.mean, node.deviation);
    return node.deviation;
}

void StandardDeviationHistory::clear(DepthNodeData& node)
{
    node.historyCount = 0;
    node.historyIndex = 0;
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
