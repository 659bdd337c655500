#pragma once

class QPainter;

// The 24 x 24 camera presets of the 3D views: one cube, drawn so that the named face is in sight and
// highlighted in the accent colour.
namespace ViewIcons {

enum class Face { Front, Left, Right, Top, Bottom };

void drawCube(QPainter &painter, Face highlighted);

} // namespace ViewIcons
