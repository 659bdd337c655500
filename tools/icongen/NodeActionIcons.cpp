#include "NodeActionIcons.h"

#include "IconPalette.h"
#include "Shapes.h"

#include <QPainter>

using namespace IconPalette;

namespace NodeActionIcons {
namespace {

const QPointF badgeCentre(18.0, 18.0);
const qreal badgeRadius = 5.5;

void drawSymbol(QPainter &painter, KindSymbols::Kind kind)
{
    painter.save();
    painter.scale(1.25, 1.25);
    KindSymbols::draw(painter, kind);
    painter.restore();
}

QPainterPath badgeDisc()
{
    return Shapes::circle(badgeCentre, badgeRadius);
}

void drawPlusBadge(QPainter &painter)
{
    Shapes::clearHalo(painter, badgeDisc(), 1.2);
    Shapes::fillOutlined(painter, badgeDisc(), accent, accentDark);
    QPainterPath plus;
    plus.moveTo(badgeCentre + QPointF(-3.0, 0.0));
    plus.lineTo(badgeCentre + QPointF(3.0, 0.0));
    plus.moveTo(badgeCentre + QPointF(0.0, -3.0));
    plus.lineTo(badgeCentre + QPointF(0.0, 3.0));
    Shapes::strokeLine(painter, plus, paper, 1.8);
}

// A white key lying diagonally across a blue disc: ring at the upper left, bit at the lower right.
void drawKeyBadge(QPainter &painter)
{
    Shapes::clearHalo(painter, badgeDisc(), 1.2);
    Shapes::fillOutlined(painter, badgeDisc(), steel, steelDark);
    const QPointF ring = badgeCentre + QPointF(-1.9, -1.9);
    Shapes::strokeLine(painter, Shapes::circle(ring, 1.5), paper, 1.3);
    QPainterPath shaft;
    shaft.moveTo(ring + QPointF(1.1, 1.1));
    shaft.lineTo(badgeCentre + QPointF(3.0, 3.0));
    shaft.moveTo(badgeCentre + QPointF(1.6, 1.6));
    shaft.lineTo(badgeCentre + QPointF(0.4, 2.8));
    shaft.moveTo(badgeCentre + QPointF(2.8, 2.8));
    shaft.lineTo(badgeCentre + QPointF(1.8, 3.8));
    Shapes::strokeLine(painter, shaft, paper, 1.3);
}

} // namespace

void drawRegister(QPainter &painter, KindSymbols::Kind kind)
{
    drawSymbol(painter, kind);
    drawPlusBadge(painter);
}

void drawControl(QPainter &painter, KindSymbols::Kind kind)
{
    drawSymbol(painter, kind);
    drawKeyBadge(painter);
}

} // namespace NodeActionIcons
