#pragma once

#include <QList>
#include <QRect>
#include <QSize>

// Where tiled sub-windows go: a grid that fills the area as it is. Every tile keeps at least the
// minimum size; when the grid cannot fit, it keeps to the area's width as far as the minimum allows
// and runs on downwards, past the bottom, for the area to scroll.
class TileLayout {
public:
    // `count` tiles in row order over an area of `area` (its size without scroll bars);
    // `scrollBarExtent` is the width a vertical scroll bar takes once the grid runs past the bottom.
    static QList<QRect> arrange(int count, QSize area, QSize minimum, int scrollBarExtent);

private:
    static int rowsFor(int count, int columns);
    static bool fits(int count, int columns, QSize area, QSize minimum);
    static int fittingColumns(int count, QSize area, QSize minimum);
    static QList<QRect> grid(int count, int columns, QSize area, QSize minimum);
};
