#pragma once

#include <cstddef>

// Median, minimum and maximum of a standard-deviation image, as the view shows them once a second.
// The median of an even count is the mean of the two middle values.
struct DeviationSummary {
    bool empty = true;
    float median = 0.f;
    float minimum = 0.f;
    float maximum = 0.f;

    static DeviationSummary of(const float* values, size_t count);
};
