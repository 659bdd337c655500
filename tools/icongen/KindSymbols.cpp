#include "KindSymbols.h"

#include "IconPalette.h"
#include "Shapes.h"

#include <QPainter>

using namespace IconPalette;
using Shapes::circle;
using Shapes::fillOutlined;
using Shapes::roundedRect;

namespace KindSymbols {

void draw(QPainter &painter, Kind kind)
{
    switch (kind) {
    case Kind::Device: drawDevice(painter); break;
    case Kind::Depth: drawDepth(painter); break;
    case Kind::Colour: drawColour(painter); break;
    case Kind::Audio: drawAudio(painter); break;
    case Kind::Unsupported: drawUnsupported(painter); break;
    }
}

// A wide depth-camera bar on a small foot: emitter (orange), main lens, colour lens.
void drawDevice(QPainter &painter)
{
    QPainterPath foot;
    foot.moveTo(6.0, 11.5);
    foot.lineTo(10.0, 11.5);
    foot.lineTo(11.5, 14.5);
    foot.lineTo(4.5, 14.5);
    foot.closeSubpath();
    fillOutlined(painter, foot, idle, idleDark);

    fillOutlined(painter, roundedRect(QRectF(0.5, 3.5, 15.0, 8.0), 2.5), brand, brandDeep);
    fillOutlined(painter, circle(QPointF(8.0, 7.5), 2.6), ink, brandLight, 1.2);
    fillOutlined(painter, circle(QPointF(3.5, 7.5), 1.3), accent, accent, 0);
    fillOutlined(painter, circle(QPointF(12.5, 7.5), 1.3), brandLight, brandLight, 0);
}

// Three planes receding to the upper right, paler with distance: the layers of a depth image.
void drawDepth(QPainter &painter)
{
    const QColor fills[3] = {brandPale, brandLight, brand};
    const QColor outlines[3] = {brand, brand, brandDeep};
    for (int layer = 0; layer < 3; ++layer) {
        const qreal offset = 3.0 * (2 - layer);
        fillOutlined(painter, roundedRect(QRectF(0.5 + offset, 6.5 - offset, 9.0, 9.0), 2.0), fills[layer],
                     outlines[layer]);
    }
    fillOutlined(painter, circle(QPointF(5.0, 11.0), 1.6), accent, accent, 0);
}

// Three overlapping discs in red, green and blue.
void drawColour(QPainter &painter)
{
    const qreal radius = 4.3;
    const QPointF centres[3] = {{8.0, 5.0}, {5.0, 10.6}, {11.0, 10.6}};
    const QColor fills[3] = {red, green, blue};
    painter.save();
    painter.setOpacity(0.92);
    for (int disc = 0; disc < 3; ++disc)
        fillOutlined(painter, circle(centres[disc], radius), fills[disc], fills[disc].darker(140), 1.0);
    painter.restore();
}

// A studio microphone: capsule, holder and stand.
void drawAudio(QPainter &painter)
{
    QPainterPath holder;
    holder.moveTo(3.5, 7.0);
    holder.arcTo(QRectF(3.5, 3.0, 9.0, 9.0), 180.0, 180.0);
    holder.moveTo(8.0, 12.0);
    holder.lineTo(8.0, 14.5);
    holder.moveTo(5.0, 14.5);
    holder.lineTo(11.0, 14.5);
    Shapes::strokeLine(painter, holder, idle, 1.5);

    fillOutlined(painter, roundedRect(QRectF(5.5, 0.5, 5.0, 9.5), 2.5), brand, brandDeep);
    QPainterPath grille;
    for (qreal y : {3.0, 5.0, 7.0}) {
        grille.moveTo(6.8, y);
        grille.lineTo(9.2, y);
    }
    Shapes::strokeLine(painter, grille, brandPale, 0.9);
}

// A grey node with a question mark drawn as strokes (no font, so it looks the same everywhere).
void drawUnsupported(QPainter &painter)
{
    fillOutlined(painter, circle(QPointF(8.0, 8.0), 7.0), idle, idleDark);
    QPainterPath hook;
    hook.moveTo(5.6, 6.0);
    hook.arcTo(QRectF(5.6, 3.4, 4.8, 4.8), 180.0, -235.0);
    hook.lineTo(8.0, 9.6);
    Shapes::strokeLine(painter, hook, paper, 1.8);
    fillOutlined(painter, circle(QPointF(8.0, 12.2), 1.1), paper, paper, 0);
}

} // namespace KindSymbols
