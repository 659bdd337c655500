#include "Shapes.h"

#include <QPainter>
#include <QPen>

namespace Shapes {

QPainterPath circle(QPointF centre, qreal radius)
{
    QPainterPath path;
    path.addEllipse(centre, radius, radius);
    return path;
}

QPainterPath rect(const QRectF &rect)
{
    QPainterPath path;
    path.addRect(rect);
    return path;
}

QPainterPath roundedRect(const QRectF &rect, qreal radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

QPainterPath polygon(std::initializer_list<QPointF> points)
{
    QPainterPath path;
    bool first = true;
    for (const QPointF &point : points) {
        if (first)
            path.moveTo(point);
        else
            path.lineTo(point);
        first = false;
    }
    path.closeSubpath();
    return path;
}

void fillOutlined(QPainter &painter, const QPainterPath &path, const QColor &fill, const QColor &outline,
                  qreal outlineWidth)
{
    painter.save();
    painter.setBrush(fill);
    if (outlineWidth > 0)
        painter.setPen(QPen(outline, outlineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    else
        painter.setPen(Qt::NoPen);
    painter.drawPath(path);
    painter.restore();
}

void strokeLine(QPainter &painter, const QPainterPath &path, const QColor &colour, qreal width)
{
    painter.save();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(path);
    painter.restore();
}

void clearHalo(QPainter &painter, const QPainterPath &shape, qreal margin)
{
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.setBrush(Qt::black);
    painter.setPen(QPen(Qt::black, 2 * margin, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(shape);
    painter.restore();
}

} // namespace Shapes
