#include "StreamingIcons.h"

#include "IconPalette.h"
#include "Shapes.h"

#include <QPainter>
#include <QtMath>

using namespace IconPalette;
using Shapes::fillOutlined;

namespace StreamingIcons {
namespace {

const QPointF lampCentre(12.0, 12.0);

QPainterPath playTriangle(QPointF centre, qreal height)
{
    const qreal half = height / 2.0;
    const qreal width = height * 0.866;
    const qreal left = centre.x() - width / 3.0;
    return Shapes::polygon({{left, centre.y() - half}, {left + width, centre.y()}, {left, centre.y() + half}});
}

// A flat lamp with a darker rim and a soft reflection in its upper half.
void drawLamp(QPainter &painter, const QColor &colour, const QColor &rim)
{
    fillOutlined(painter, Shapes::circle(lampCentre, 10.5), colour, rim);
    painter.save();
    painter.setOpacity(0.28);
    QPainterPath reflection;
    reflection.addEllipse(QRectF(5.5, 2.8, 13.0, 7.0));
    fillOutlined(painter, reflection, paper, paper, 0);
    painter.restore();
}

QPainterPath snowflake(QPointF centre, qreal radius)
{
    QPainterPath flake;
    for (int spoke = 0; spoke < 6; ++spoke) {
        const qreal angle = qDegreesToRadians(90.0 + 60.0 * spoke);
        const QPointF direction(qCos(angle), -qSin(angle));
        const QPointF tip = centre + radius * direction;
        flake.moveTo(centre);
        flake.lineTo(tip);
        const QPointF branchRoot = centre + 0.6 * radius * direction;
        for (qreal side : {-1.0, 1.0}) {
            const qreal branchAngle = angle + side * qDegreesToRadians(45.0);
            flake.moveTo(branchRoot);
            flake.lineTo(branchRoot + 0.38 * radius * QPointF(qCos(branchAngle), -qSin(branchAngle)));
        }
    }
    return flake;
}

} // namespace

void drawPlay(QPainter &painter)
{
    fillOutlined(painter, Shapes::polygon({{6.0, 3.5}, {20.5, 12.0}, {6.0, 20.5}}), go, goDark, 1.4);
}

void drawPause(QPainter &painter)
{
    fillOutlined(painter, Shapes::roundedRect(QRectF(5.0, 4.0, 5.0, 16.0), 1.5), hold, holdDark);
    fillOutlined(painter, Shapes::roundedRect(QRectF(14.0, 4.0, 5.0, 16.0), 1.5), hold, holdDark);
}

void drawStop(QPainter &painter)
{
    fillOutlined(painter, Shapes::roundedRect(QRectF(4.5, 4.5, 15.0, 15.0), 2.5), halt, haltDark);
}

void drawStatusStreaming(QPainter &painter)
{
    drawLamp(painter, go, goDark);
    fillOutlined(painter, playTriangle(lampCentre, 10.0), paper, paper, 1.0);
}

void drawStatusFrozen(QPainter &painter)
{
    drawLamp(painter, ice, iceDark);
    Shapes::strokeLine(painter, snowflake(lampCentre, 6.5), paper, 1.5);
}

void drawStatusStopped(QPainter &painter)
{
    drawLamp(painter, idle, idleDark);
    fillOutlined(painter, Shapes::roundedRect(QRectF(8.0, 8.0, 8.0, 8.0), 1.2), halt, haltDark);
}

} // namespace StreamingIcons
