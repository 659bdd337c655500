#pragma once

class QPainter;

// The symbol of each tree item kind, drawn in a 16 x 16 unit square. The tree shows them at that size; the
// register and control actions draw the same symbols under a badge, so both read as the same thing.
namespace KindSymbols {

enum class Kind { Device, Depth, Colour, Audio, Unsupported };

void draw(QPainter &painter, Kind kind);

void drawDevice(QPainter &painter);
void drawDepth(QPainter &painter);
void drawColour(QPainter &painter);
void drawAudio(QPainter &painter);
void drawUnsupported(QPainter &painter);

} // namespace KindSymbols
