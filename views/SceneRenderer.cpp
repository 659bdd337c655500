#include "views/SceneRenderer.h"

#include "views/TriangleTable.h"

#include <GL/gl.h>

void SceneRenderer::drawPlanePoints(const int16_t* planes, int count)
{
    const int16_t* xs = planes;
    const int16_t* ys = planes + count;
    const int16_t* zs = planes + 2 * count;
    glBegin(GL_POINTS);
    for (int i = 0; i < count; ++i)
        glVertex3i(xs[i], ys[i], zs[i]);
    glEnd();
}

void SceneRenderer::drawPlanePoints(const float* planes, int count)
{
    const float* xs = planes;
    const float* ys = planes + count;
    const float* zs = planes + 2 * count;
    glBegin(GL_POINTS);
    for (int i = 0; i < count; ++i)
        glVertex3f(xs[i], ys[i], zs[i]);
    glEnd();
}

void SceneRenderer::drawVertexArray(const void* vertices, bool shorts, int count)
{
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, shorts ? GL_SHORT : GL_FLOAT, 0, vertices);
    glDrawArrays(GL_POINTS, 0, count);
    glDisableClientState(GL_VERTEX_ARRAY);
}

void SceneRenderer::drawUvPoints(const float* vertices, const float* uv, int count)
{
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, vertices);
    glTexCoordPointer(2, GL_FLOAT, 0, uv);
    glDrawArrays(GL_POINTS, 0, count);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}

int SceneRenderer::drawUvTriangles(const float* vertices, const float* uv, int width, int height)
{
    int drawn = 0;
    int corners[2][3];
    glBegin(GL_TRIANGLES);
    for (int row = 0; row + 1 < height; ++row) {
        for (int column = 0; column + 1 < width; ++column) {
            const int index[4] = {row * width + column, row * width + column + 1, (row + 1) * width + column + 1,
                                  (row + 1) * width + column};
            const float z[4] = {vertices[3 * index[0] + 2], vertices[3 * index[1] + 2], vertices[3 * index[2] + 2],
                                vertices[3 * index[3] + 2]};
            const int mask = TriangleTable::cellMask(z);
            if (mask < 0)
                continue;
            const int count = TriangleTable::triangles(mask, corners);
            for (int t = 0; t < count; ++t) {
                for (int corner : corners[t]) {
                    const int i = index[corner];
                    glTexCoord2f(uv[2 * i], uv[2 * i + 1]);
                    glVertex3f(vertices[3 * i], vertices[3 * i + 1], vertices[3 * i + 2]);
                }
            }
            drawn += count;
        }
    }
    glEnd();
    return drawn;
}
