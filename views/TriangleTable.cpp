#include "views/TriangleTable.h"

#include <array>
#include <cmath>

namespace {

// What each mask draws.
enum Cover : unsigned char { None, Tri321, Tri320, Tri310, Tri210, Both };

constexpr std::array<Cover, 64> buildTable()
{
    std::array<Cover, 64> table{};
    for (Cover& c : table)
        c = Both; // a cell whose corners are all connected enough is split along its 0-2 diagonal
    for (int m : {0, 1, 2, 4, 8, 12, 16, 18, 32, 33})
        table[m] = None;
    for (int m : {3, 5, 6, 7})
        table[m] = Tri321;
    for (int m : {9, 17, 24, 25})
        table[m] = Tri320;
    for (int m : {10, 34, 40, 42})
        table[m] = Tri310;
    for (int m : {20, 36, 48, 52})
        table[m] = Tri210;
    return table;
}

constexpr std::array<Cover, 64> kTable = buildTable();

void setTriangle(int out[3], int a, int b, int c)
{
    out[0] = a;
    out[1] = b;
    out[2] = c;
}

} // namespace

int TriangleTable::triangles(int mask, int out[2][3])
{
    if (mask < 0 || mask >= 64)
        return 0;
    switch (kTable[mask]) {
    case None:
        return 0;
    case Tri321:
        setTriangle(out[0], 3, 2, 1);
        return 1;
    case Tri320:
        setTriangle(out[0], 3, 2, 0);
        return 1;
    case Tri310:
        setTriangle(out[0], 3, 1, 0);
        return 1;
    case Tri210:
        setTriangle(out[0], 2, 1, 0);
        return 1;
    case Both:
        setTriangle(out[0], 2, 1, 0);
        setTriangle(out[1], 3, 2, 0);
        return 2;
    }
    return 0;
}

int TriangleTable::cellMask(const float z[4])
{
    const bool valid[4] = {z[0] > 0.f, z[1] > 0.f, z[2] > 0.f, z[3] > 0.f};
    if (int(valid[0]) + int(valid[1]) + int(valid[2]) + int(valid[3]) < 3)
        return -1;
    static constexpr int kPairs[6][3] = {{0, 1, 32}, {0, 2, 16}, {0, 3, 8}, {1, 2, 4}, {1, 3, 2}, {2, 3, 1}};
    int mask = 0;
    for (const auto& pair : kPairs) {
        const int a = pair[0], b = pair[1];
        if (valid[a] && valid[b] && std::fabs(z[a] - z[b]) < MaxDepthStep)
            mask |= pair[2];
    }
    return mask;
}
