#pragma once

#include <QPoint>
#include <QtGlobal>

class DisplayImage;

// Draws a flat view in the current GL state, in widget pixels (an orthographic projection of the
// widget with y down): the image as one textured rectangle, and the overlays over it, each untextured
// in its own colour. The caller binds the texture and enables or disables blending.
class ImageRenderer {
public:
    // The image over a width x height widget, mirrored (right to left) if asked; texture coordinates
    // 0..1 are scaled to the part of the texture that the image fills.
    static void drawImage(const DisplayImage& image, int width, int height, bool mirror);
    // The region of interest between two widget corners: filled with the colour (0xRRGGBB) at alpha 0.2,
    // outlined in it opaque.
    static void drawRoi(QPoint topLeft, QPoint bottomRight, quint32 rgb);
    // The audio sweep's position: one column that inverts what is under it.
    static void drawMarker(int x, int height);
    // A cross-hair through the pointer that inverts what is under it.
    static void drawCrossHair(QPoint pointer, int width, int height);
    // glColor4f of a 0xRRGGBB colour with the given alpha.
    static void setColor(quint32 rgb, float alpha);
};
