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
    // The shaft widens from a point at the origin, so that an eye at the origin sees it as a small
    // dot whatever the near plane; the head points outwards and has its base disc facing back.
    addCone(axis, u, v, kShaftLength, kShaftRadius, 0.f);
    addCone(axis, u, v, kShaftLength, kHeadRadius, kShaftLength + kHeadLength);
    float baseCentre[3], back[3];
    combine(axis, u, v, kShaftLength, 0, 0, baseCentre);
    combine(axis, u, v, -1, 0, 0, back);
    for (int s = 0; s < Segments; ++s) {
        float h0[3], h1[3];
        ringPoint(axis, u, v, kShaftLength, kHeadRadius, s, h0);
        ringPoint(axis, u, v, kShaftLength, kHeadRadius, s + 1, h1);
        addVertex(baseCentre, back);
        addVertex(h1, back);
        addVertex(h0, back);
    }
}

void AxisMesh::ringPoint(const float axis[3], const float u[3], const float v[3], float at, float radius, float step,
                         float out[3])
{
    const float angle = kTwoPi * step / Segments;
    combine(axis, u, v, at, radius * std::cos(angle), radius * std::sin(angle), out);
}

void AxisMesh::addCone(const float axis[3], const float u[3], const float v[3], float baseAt, float radius,
                       float apexAt)
{
    // The side normal leans away from the base towards the apex by the cone's half-angle; the
    // triangles keep their outer side counter-clockwise whichever way the cone points.
    const float height = apexAt - baseAt;
    const float slant = std::sqrt(height * height + radius * radius);
    const float lean = (height > 0.f ? radius : -radius) / slant;
    const float out = std::fabs(height) / slant;
    float apex[3];
    combine(axis, u, v, apexAt, 0, 0, apex);
    for (int s = 0; s < Segments; ++s) {
        float b0[3], b1[3], n0[3], n1[3], nApex[3];
        ringPoint(axis, u, v, baseAt, radius, float(s), b0);
        ringPoint(axis, u, v, baseAt, radius, float(s + 1), b1);
        ringPoint(axis, u, v, lean, out, float(s), n0);
        ringPoint(axis, u, v, lean, out, float(s + 1), n1);
        ringPoint(axis, u, v, lean, out, float(s) + 0.5f, nApex);
        if (height > 0.f) {
            addVertex(b0, n0);
            addVertex(b1, n1);
        } else {
            addVertex(b1, n1);
            addVertex(b0, n0);
        }
        addVertex(apex, nApex);
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
