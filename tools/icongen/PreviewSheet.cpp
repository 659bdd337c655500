#include "PreviewSheet.h"

#include "ImageCatalogue.h"

#include <QPainter>

namespace PreviewSheet {
namespace {

const int zoom = 4;
const int columns = 5;
const int cellWidth = 32 * zoom + 16;
const int cellHeight = cellWidth + 40;

bool isSmall(const ImageSpec &spec)
{
    return spec.size.width() <= 32;
}

std::vector<const ImageSpec *> imagesWhere(bool small)
{
    std::vector<const ImageSpec *> images;
    for (const ImageSpec &spec : ImageCatalogue::all())
        if (isSmall(spec) == small)
            images.push_back(&spec);
    return images;
}

} // namespace

QImage renderIcons(const QColor &background)
{
    const std::vector<const ImageSpec *> images = imagesWhere(true);
    const int rows = int((images.size() + columns - 1) / columns);
    QImage sheet(columns * cellWidth, rows * cellHeight, QImage::Format_ARGB32);
    sheet.fill(background);
    QPainter painter(&sheet);
    for (std::size_t index = 0; index < images.size(); ++index) {
        const QImage image = ImageCatalogue::render(*images[index]);
        const QPoint origin(int(index % columns) * cellWidth + 8, int(index / columns) * cellHeight + 8);
        painter.drawImage(origin, image);
        painter.drawImage(QRect(origin + QPoint(0, 32), image.size() * zoom), image);
    }
    return sheet;
}

QImage renderLogos()
{
    QImage sheet(720, 372 + 2 * 45 * 2 + 40, QImage::Format_ARGB32);
    sheet.fill(QColor(0xf3, 0xf3, 0xf3));
    QPainter painter(&sheet);
    int y = 8;
    for (const ImageSpec *spec : imagesWhere(false)) {
        const QImage image = ImageCatalogue::render(*spec);
        painter.drawImage(QPoint(8, y), image);
        if (image.width() < 360) {
            painter.drawImage(QRect(QPoint(image.width() + 24, y), image.size() * 2), image);
            y += image.height() * 2;
        } else {
            y += image.height();
        }
        y += 8;
    }
    return sheet;
}

bool writeAll(const QString &prefix)
{
    return renderIcons(QColor(0xf3, 0xf3, 0xf3)).save(prefix + QStringLiteral("-light.png"), "PNG")
        && renderIcons(QColor(0x35, 0x3a, 0x40)).save(prefix + QStringLiteral("-dark.png"), "PNG")
        && renderLogos().save(prefix + QStringLiteral("-logos.png"), "PNG");
}

} // namespace PreviewSheet
