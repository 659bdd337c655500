#pragma once

#include <QSize>
#include <QString>

#include <functional>

class QPainter;

// One generated image: its file name under ":/images/", its exact size in pixels, and how to paint it onto a
// transparent canvas of that size.
struct ImageSpec
{
    QString fileName;
    QSize size;
    std::function<void(QPainter &)> paint;
    // Opaque images cover every pixel; all others keep a transparent background.
    bool opaque = false;
    // Images with text depend on the installed fonts, so another machine may render them slightly differently.
    bool usesFonts = false;
};
