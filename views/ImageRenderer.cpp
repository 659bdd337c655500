#include "views/ImageRenderer.h"

#include "camera/DisplayImage.h"

#include <GL/gl.h>

namespace {

void rectangle(GLenum mode, QPoint a, QPoint b)
{
    glBegin(mode);
    glVertex2i(a.x(), a.y());
    glVertex2i(b.x(), a.y());
    glVertex2i(b.x(), b.y());
    glVertex2i(a.x(), b.y());
    glEnd();
}

} // namespace

void ImageRenderer::setColor(quint32 rgb, float alpha)
{
    glColor4f(float((rgb >> 16) & 0xFF) / 255.f, float((rgb >> 8) & 0xFF) / 255.f, float(rgb & 0xFF) / 255.f, alpha);
}

void ImageRenderer::drawImage(const DisplayImage& image, int width, int height, bool mirror)
{
    glMatrixMode(GL_TEXTURE);
    glLoadIdentity();
    glScalef(float(image.width) / float(image.textureWidth), float(image.height) / float(image.textureHeight), 1.f);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glColor4f(1.f, 1.f, 1.f, 1.f);

    const float w = float(width), h = float(height);
    const float x0 = mirror ? w : 0.f;
    const float x1 = mirror ? 0.f : w;
    glBegin(GL_QUADS);
    glTexCoord2f(0.f, 0.f);
    glVertex2f(x0, 0.f);
    glTexCoord2f(1.f, 0.f);
    glVertex2f(x1, 0.f);
    glTexCoord2f(1.f, 1.f);
    glVertex2f(x1, h);
    glTexCoord2f(0.f, 1.f);
    glVertex2f(x0, h);
    glEnd();
}

void ImageRenderer::drawRoi(QPoint topLeft, QPoint bottomRight, quint32 rgb)
{
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    setColor(rgb, 0.2f);
    rectangle(GL_QUADS, topLeft, bottomRight);
    setColor(rgb, 1.f);
    rectangle(GL_LINE_LOOP, topLeft, bottomRight);
}

// Lines are drawn through pixel centres (+0.5) so that each covers exactly one row or column.
void ImageRenderer::drawMarker(int x, int height)
{
    glBlendFunc(GL_SRC_COLOR, GL_ONE_MINUS_SRC_COLOR);
    glColor4f(1.f, 1.f, 1.f, 1.f);
    glBegin(GL_LINES);
    glVertex2f(float(x) + 0.5f, 0.f);
    glVertex2f(float(x) + 0.5f, float(height));
    glEnd();
}

void ImageRenderer::drawCrossHair(QPoint pointer, int width, int height)
{
    const float mx = float(pointer.x()) + 0.5f;
    const float my = float(pointer.y()) + 0.5f;
    glBlendFunc(GL_ONE_MINUS_DST_COLOR, GL_ZERO);
    glColor4f(1.f, 1.f, 1.f, 1.f);
    glBegin(GL_LINES);
    glVertex2f(0.f, my);
    glVertex2f(float(width), my);
    glVertex2f(mx, 0.f);
    glVertex2f(mx, float(height));
    glEnd();
}
