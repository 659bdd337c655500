#pragma once

#include <QColor>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>

#include <initializer_list>

class QPainter;

// Small drawing helpers shared by every image: paths in device-independent units and the outlined fill
// all icons use, so that they share one line weight.
namespace Shapes {

QPainterPath circle(QPointF centre, qreal radius);
QPainterPath rect(const QRectF &rect);
QPainterPath roundedRect(const QRectF &rect, qreal radius);
QPainterPath polygon(std::initializer_list<QPointF> points);

// Fills the path and strokes its outline with a pen of the given width (round joins, no dashes).
void fillOutlined(QPainter &painter, const QPainterPath &path, const QColor &fill, const QColor &outline,
                  qreal outlineWidth = 1.0);

// Strokes an open path with round caps and joins.
void strokeLine(QPainter &painter, const QPainterPath &path, const QColor &colour, qreal width);

// Clears everything already painted under the shape and a margin around it, so that a badge laid over a
// symbol stands free of it on any background.
void clearHalo(QPainter &painter, const QPainterPath &shape, qreal margin);

} // namespace Shapes
