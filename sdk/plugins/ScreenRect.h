#pragma once

namespace Zerlane::sim {

// A rectangle of pixels, [x0, x1) x [y0, y1).
struct ScreenRect {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    unsigned char object = 0; // the moving object the rectangle bounds, if any

    bool isEmpty() const { return x1 <= x0 || y1 <= y0; }
    int area() const { return isEmpty() ? 0 : (x1 - x0) * (y1 - y0); }
};

} // namespace Zerlane::sim
