#include "ExportIcons.h"

#include "IconPalette.h"
#include "Shapes.h"

#include <QPainter>

using namespace IconPalette;
using Shapes::fillOutlined;

namespace ExportIcons {
namespace {

// A page with a folded corner, a teal header row and a grid of cells.
void drawTableSheet(QPainter &painter)
{
    const qreal left = 2.5, top = 1.5, right = 16.5, bottom = 21.5, fold = 4.0;
    const QPainterPath page = Shapes::polygon(
        {{left, top}, {right - fold, top}, {right, top + fold}, {right, bottom}, {left, bottom}});
    fillOutlined(painter, page, paper, slate);
    fillOutlined(painter, Shapes::polygon({{right - fold, top}, {right - fold, top + fold}, {right, top + fold}}),
                 mist, slate);

    fillOutlined(painter, Shapes::rect(QRectF(left + 2.0, 7.0, right - left - 4.0, 3.0)), brand, brand, 0);
    QPainterPath grid;
    for (qreal y : {13.0, 16.0, 19.0}) {
        grid.moveTo(left + 2.0, y);
        grid.lineTo(right - 2.0, y);
    }
    for (qreal x : {8.0, 11.5}) {
        grid.moveTo(x, 10.0);
        grid.lineTo(x, 19.0);
    }
    painter.save();
    painter.setPen(QPen(brandLight, 1.0));
    painter.drawPath(grid);
    painter.restore();
}

QPainterPath exportArrow()
{
    return Shapes::polygon({{11.5, 14.5}, {17.0, 14.5}, {17.0, 11.0}, {23.0, 17.0}, {17.0, 23.0}, {17.0, 19.5},
                            {11.5, 19.5}});
}

// A dark strip of film with sprocket holes along both edges.
void drawFilmStrip(QPainter &painter)
{
    fillOutlined(painter, Shapes::roundedRect(QRectF(1.5, 3.5, 18.0, 14.0), 1.5), ink, slate);
    QPainterPath holes;
    for (qreal x = 3.0; x < 18.0; x += 3.5) {
        holes.addRect(QRectF(x, 5.0, 2.0, 1.5));
        holes.addRect(QRectF(x, 14.5, 2.0, 1.5));
    }
    fillOutlined(painter, holes, mist, mist, 0);
    fillOutlined(painter, Shapes::rect(QRectF(3.0, 8.0, 15.0, 5.0)), brand, brand, 0);
}

const QPointF badgeCentre(17.5, 17.5);

} // namespace

void drawExportCsv(QPainter &painter)
{
    drawTableSheet(painter);
    Shapes::clearHalo(painter, exportArrow(), 1.0);
    fillOutlined(painter, exportArrow(), accent, accentDark);
}

void drawRecord(QPainter &painter)
{
    drawFilmStrip(painter);
    const QPainterPath dot = Shapes::circle(badgeCentre, 5.5);
    Shapes::clearHalo(painter, dot, 1.2);
    fillOutlined(painter, dot, halt, haltDark);
}

void drawStopRecording(QPainter &painter)
{
    drawFilmStrip(painter);
    const QPainterPath square = Shapes::roundedRect(QRectF(badgeCentre - QPointF(5.0, 5.0), QSizeF(10.0, 10.0)), 1.5);
    Shapes::clearHalo(painter, square, 1.2);
    fillOutlined(painter, square, halt, haltDark);
}

} // namespace ExportIcons
