#pragma once

#include <QColor>
#include <QWidget>

class DepthPalette;

// A 320 x 32 strip of a palette's colours, left to right across the whole 16-bit index range, whatever
// the palette's size: a grey scale of 32,768 entries shows its untouched upper half in red.
class PaletteWidget : public QWidget {
    Q_OBJECT
public:
    static constexpr int StripWidth = 320;
    static constexpr int StripHeight = 32;

    // The palette is not owned and must outlive the widget.
    explicit PaletteWidget(const DepthPalette* palette, QWidget* parent = nullptr);

    // The table index that column `column` of a strip `columns` wide shows: (column x 65,536) / columns,
    // in 16 bits.
    static quint32 indexOfColumn(int column, int columns);
    // A colour word as an opaque colour, whatever its alpha.
    static QColor colorOf(quint32 word);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const DepthPalette* m_palette;
};
