#include "views/TileLayout.h"

#include <QtMath>

#include <algorithm>

int TileLayout::rowsFor(int count, int columns)
{
    return (count + columns - 1) / columns;
}

bool TileLayout::fits(int count, int columns, QSize area, QSize minimum)
{
    return area.width() / columns >= minimum.width() && area.height() / rowsFor(count, columns) >= minimum.height();
}

// The column count nearest to a square grid whose tiles all fit, or 0 when none does.
int TileLayout::fittingColumns(int count, QSize area, QSize minimum)
{
    const int square = qCeil(qSqrt(qreal(count)));
    for (int offset = 0; offset < count; ++offset) {
        for (int columns : {square - offset, square + offset}) {
            if (columns >= 1 && columns <= count && fits(count, columns, area, minimum))
                return columns;
        }
    }
    return 0;
}

// Cells of equal size, filled row by row; a short last row leaves its last cells empty rather than
// stretch its views.
QList<QRect> TileLayout::grid(int count, int columns, QSize area, QSize minimum)
{
    const int rows = rowsFor(count, columns);
    const int width = std::max(area.width(), columns * minimum.width());
    const int height = std::max(area.height(), rows * minimum.height());
    QList<QRect> tiles;
    for (int i = 0; i < count; ++i) {
        const int row = i / columns, column = i % columns;
        const QPoint topLeft(column * width / columns, row * height / rows);
        const QPoint bottomRight((column + 1) * width / columns - 1, (row + 1) * height / rows - 1);
        tiles << QRect(topLeft, bottomRight);
    }
    return tiles;
}

QList<QRect> TileLayout::arrange(int count, QSize area, QSize minimum, int scrollBarExtent)
{
    if (count <= 0)
        return {};
    minimum = minimum.expandedTo(QSize(1, 1));
    if (const int columns = fittingColumns(count, area, minimum))
        return grid(count, columns, area, minimum);
    // As many columns as the width takes; the rows run on below the area.
    auto columnsWithin = [&](int width) { return std::clamp(width / minimum.width(), 1, count); };
    int columns = columnsWithin(area.width());
    if (rowsFor(count, columns) * minimum.height() > area.height()) {
        area.rwidth() -= scrollBarExtent;
        columns = columnsWithin(area.width());
    }
    return grid(count, columns, area, minimum);
}
