#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>

// A rectangle of image pixels chosen with the mouse; x below 0 means none is chosen.
struct RegionOfInterest {
    int32_t x = -1;
    int32_t y = -1;
    int32_t width = -1;
    int32_t height = -1;

    bool isSet() const { return x >= 0; }
    bool operator==(const RegionOfInterest&) const = default;

    // The rectangle with corners at two pixels, both included.
    static RegionOfInterest spanning(int32_t x0, int32_t y0, int32_t x1, int32_t y1)
    {
        return {std::min(x0, x1), std::min(y0, y1), std::abs(x0 - x1) + 1, std::abs(y0 - y1) + 1};
    }

    // The part that lies in an image of that size; not set when nothing does.
    RegionOfInterest clampedTo(int32_t imageWidth, int32_t imageHeight) const
    {
        if (!isSet() || x >= imageWidth || y >= imageHeight || width <= 0 || height <= 0 || y < 0)
            return {};
        return {x, y, std::min(width, imageWidth - x), std::min(height, imageHeight - y)};
    }
};
