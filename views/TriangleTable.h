#pragma once

// How one cell of a grid of measured points is covered with triangles. A cell's corners are numbered
// 0 = (column, row), 1 = (column + 1, row), 2 = (column + 1, row + 1), 3 = (column, row + 1). A corner is
// valid when its z is above 0; two valid corners are connected when their z differ by less than 0.1.
// The six possible connections form a 6-bit mask (32: 0-1, 16: 0-2, 8: 0-3, 4: 1-2, 2: 1-3, 1: 2-3),
// and a fixed table of 64 entries gives the triangles (at most two) that the mask allows.
class TriangleTable {
public:
    static constexpr float MaxDepthStep = 0.1f;

    // Number of triangles (0..2) for a mask; their corners go to out[0] and out[1]. A mask outside
    // 0..63 gives none.
    static int triangles(int mask, int out[2][3]);
    // The connection mask of a cell from its corners' z, or -1 when fewer than three are valid.
    static int cellMask(const float z[4]);
};
