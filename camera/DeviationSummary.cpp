#include "camera/DeviationSummary.h"

#include <algorithm>
#include <vector>

DeviationSummary DeviationSummary::of(const float* values, size_t count)
{
    DeviationSummary summary;
    if (count == 0)
        return summary;
    std::vector<float> sorted(values, values + count);
    std::sort(sorted.begin(), sorted.end());
    const size_t middle = count / 2;
    summary.empty = false;
    summary.median = count % 2 == 0 ? (sorted[middle] + sorted[middle - 1]) * 0.5f : sorted[middle];
    summary.minimum = sorted.front();
    summary.maximum = sorted.back();
    return summary;
}
