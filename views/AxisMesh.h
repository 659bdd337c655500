#pragma once

#include <vector>

// The axes of the 3D scene as lit solids: for each of x, y and z a shaft (a slim cone widening from the
// origin) and an arrow head (a cone) at its end, both built from rings of 16 segments. Built once per unit
// scale; drawn with immediate-mode triangles carrying their normals.
class AxisMesh {
public:
    static constexpr int Segments = 16;

    // Sizes in metres, multiplied by the unit scale (1 for metres, 1000 for millimetres).
    void build(float unitScale);
    float unitScale() const { return m_unitScale; }
    // Vertex count (a multiple of 3).
    int vertexCount() const { return int(m_positions.size() / 3); }
    const std::vector<float>& positions() const { return m_positions; }
    const std::vector<float>& normals() const { return m_normals; }

    // glBegin(GL_TRIANGLES) .. glEnd() of every triangle, in the current material.
    void draw() const;

private:
    // One axis along unit vector `axis`, with `u` and `v` completing a right-handed frame.
    void addAxis(const float axis[3], const float u[3], const float v[3]);
    // The side of a cone around `axis`: a ring of `radius` at `baseAt` along the axis, the apex at
    // `apexAt` (before or after the ring).
    void addCone(const float axis[3], const float u[3], const float v[3], float baseAt, float radius, float apexAt);
    // The point `at` along the axis and `radius` away from it, `step` segments round the ring.
    static void ringPoint(const float axis[3], const float u[3], const float v[3], float at, float radius, float step,
                          float out[3]);
    void addVertex(const float p[3], const float n[3]);

    float m_unitScale = 0.f;
    std::vector<float> m_positions;
    std::vector<float> m_normals;
};
