#include "palettes/PaletteWidget.h"

#include "palettes/DepthPalette.h"

#include <QPainter>

PaletteWidget::PaletteWidget(const DepthPalette* palette, QWidget* parent)
    : QWidget(parent), m_palette(palette)
{
    setFixedSize(StripWidth, StripHeight);
}

quint32 PaletteWidget::indexOfColumn(int column, int columns)
{
    return (quint32(column) * DepthPalette::TableSize / quint32(columns)) & 0xFFFF;
}

QColor PaletteWidget::colorOf(quint32 word)
{
    return QColor(int(DepthPalette::red(word)), int(DepthPalette::green(word)), int(DepthPalette::blue(word)));
}

void PaletteWidget::paintEvent(QPaintEvent*)
{
    // A black frame, then one vertical line per column inside it.
    const int w = width() - 2;
    const int h = height() - 2;
    QPainter painter(this);
    painter.setPen(QColor(0, 0, 0));
    painter.drawRect(0, 0, w, h);
    if (!m_palette || w <= 0)
        return;
    const quint32* table = m_palette->colors();
    for (int i = 0; i < w; ++i) {
        painter.setPen(colorOf(table[indexOfColumn(i, w)]));
        painter.drawLine(i + 1, 1, i + 1, h);
    }
}
