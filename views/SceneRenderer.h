#pragma once

#include <cstdint>

// Draws the point data of a 3D view in the current GL state (matrices, colour, texture and point size
// are set by the caller): three-plane depth maps and vertex maps as points, the UV view as textured
// points or as textured triangles over the grid of measured points.
class SceneRenderer {
public:
    // A depth map in three planes (count x values, then count y, then count z), one point each.
    static void drawPlanePoints(const int16_t* planes, int count);
    static void drawPlanePoints(const float* planes, int count);
    // Interleaved x, y, z triples of 16-bit integers (shorts) or floats.
    static void drawVertexArray(const void* vertices, bool shorts, int count);
    // Interleaved float vertices with one u, v pair each, as points.
    static void drawUvPoints(const float* vertices, const float* uv, int count);
    // The grid of width x height float vertices as triangles chosen by TriangleTable; returns the
    // number of triangles drawn.
    static int drawUvTriangles(const float* vertices, const float* uv, int width, int height);
};
