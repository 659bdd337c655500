#include "views/AxisMesh.h"

#include <GL/gl.h>

#include <cmath>

namespace {

constexpr float kShaftLength = 0.1f;
constexpr float kShaftRadius = 0.002f;
constexpr float kHeadLength = 0.02f;
constexpr float kHeadRadius = 0.006f;
constexpr float kTwoPi = 6.2831853f;

// p = a * axis + b * u + c * v
void combine(const float axis[3], const float u[3], const float v[3], float a, float b, float c, float out[3])
{
    for (int i = 0; i < 3; ++i)
        out[i] = a * axis[i] + b * u[i] + c * v[i];
}

} // namespace

void AxisMesh::build(float unitScale)
{
    m_unitScale = unitScale;
    m_positions.clear();
    m_normals.clear();
    const float x[3] = {1, 0, 0}, y[3] = {0, 1, 0}, z[3] = {0, 0, 1};
    addAxis(x, y, z);
    addAxis(y, z, x);
    addAxis(z, x, y);
}

void AxisMesh::addVertex(const float p[3], const float n[3])
{
    m_positions.insert(m_positions.end(), {p[0] * m_unitScale, p[1] * m_unitScale, p[2] * m_unitScale});
    m_normals.insert(m_normals.end(), {n[0], n[1], n[2]});
}

void AxisMesh::addAxis(const float axis[3], const float u[3], const float v[3])
{
    // A cone's side normal leans away from its apex by the cone's half-angle: towards the tip for the
    // head, back towards the origin for the shaft, which widens from a point at the origin.
    const float slant = std::sqrt(kHeadLength * kHeadLength + kHeadRadius * kHeadRadius);
    const float sideOut = kHeadLength / slant;
    const float sideUp = kHeadRadius / slant;
    const float shaftSlant = std::sqrt(kShaftLength * kShaftLength + kShaftRadius * kShaftRadius);
    const float shaftOut = kShaftLength / shaftSlant;
    const float shaftBack = -kShaftRadius / shaftSlant;
    const float tipAt = kShaftLength + kHeadLength;
    float tip[3], baseCentre[3], back[3];
    const float origin[3] = {0.f, 0.f, 0.f};
    combine(axis, u, v, tipAt, 0, 0, tip);
    combine(axis, u, v, kShaftLength, 0, 0, baseCentre);
    combine(axis, u, v, -1, 0, 0, back);

    for (int s = 0; s < Segments; ++s) {
        const float a0 = kTwoPi * float(s) / Segments;
        const float a1 = kTwoPi * float(s + 1) / Segments;
        const float c0 = std::cos(a0), s0 = std::sin(a0), c1 = std::cos(a1), s1 = std::sin(a1);
        const float cm = std::cos(0.5f * (a0 + a1)), sm = std::sin(0.5f * (a0 + a1));
        float n0[3], n1[3], nm[3], p10[3], p11[3];

        // Shaft: a thin cone from the origin, so that an eye at the origin sees it as a small dot
        // whatever the near plane.
        combine(axis, u, v, shaftBack, shaftOut * c0, shaftOut * s0, n0);
        combine(axis, u, v, shaftBack, shaftOut * c1, shaftOut * s1, n1);
        combine(axis, u, v, shaftBack, shaftOut * cm, shaftOut * sm, nm);
        combine(axis, u, v, kShaftLength, kShaftRadius * c0, kShaftRadius * s0, p10);
        combine(axis, u, v, kShaftLength, kShaftRadius * c1, kShaftRadius * s1, p11);
        addVertex(origin, nm);
        addVertex(p11, n1);
        addVertex(p10, n0);

        // Head: side of the cone, then its base disc facing back along the axis.
        float h0[3], h1[3], tipNormal[3];
        combine(axis, u, v, kShaftLength, kHeadRadius * c0, kHeadRadius * s0, h0);
        combine(axis, u, v, kShaftLength, kHeadRadius * c1, kHeadRadius * s1, h1);
        combine(axis, u, v, sideUp, sideOut * c0, sideOut * s0, n0);
        combine(axis, u, v, sideUp, sideOut * c1, sideOut * s1, n1);
        combine(axis, u, v, sideUp, sideOut * cm, sideOut * sm, tipNormal);
        addVertex(h0, n0);
        addVertex(h1, n1);
        addVertex(tip, tipNormal);
        addVertex(baseCentre, back);
        addVertex(h1, back);
        addVertex(h0, back);
    }
}

void AxisMesh::draw() const
{
    const int count = vertexCount();
    const float* p = m_positions.data();
    const float* n = m_normals.data();
    glBegin(GL_TRIANGLES);
    for (int i = 0; i < count; ++i) {
        glNormal3fv(n + 3 * i);
        glVertex3fv(p + 3 * i);
    }
    glEnd();
}
