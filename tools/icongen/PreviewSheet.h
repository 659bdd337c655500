#pragma once

#include <QImage>

// Contact sheets to judge the drawings side by side while refining them; never shipped. The small images
// appear at their own size and enlarged, on a light or a dark background; the logos at their own size.
namespace PreviewSheet {

QImage renderIcons(const QColor &background);
QImage renderLogos();

// Writes "<prefix>-light.png", "<prefix>-dark.png" and "<prefix>-logos.png"; false if one cannot be written.
bool writeAll(const QString &prefix);

} // namespace PreviewSheet
