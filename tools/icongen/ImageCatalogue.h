#pragma once

#include "ImageSpec.h"

#include <QImage>

#include <vector>

// Every image the viewer loads from ":/images/", and the rendering of each.
namespace ImageCatalogue {

const std::vector<ImageSpec> &all();

// Paints the image, antialiased, onto a canvas of exactly its size.
QImage render(const ImageSpec &spec);

// Writes every image as "<directory>/<file name>"; creates the directory if needed. On failure returns false
// and says why in errorMessage.
bool writeAll(const QString &directory, QString &errorMessage);

} // namespace ImageCatalogue
