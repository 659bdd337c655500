#include "ViewIcons.h"

#include "IconPalette.h"
#include "Shapes.h"

#include <QPainter>

using namespace IconPalette;

namespace ViewIcons {
namespace {

// The cube in oblique projection with its depth going up and to the right: front, top and right faces are
// visible. The left and bottom views mirror this drawing so that their face comes into sight.
const qreal nearLeft = 3.5, nearRight = 16.5, nearTop = 8.5, nearBottom = 21.5, depth = 5.0;

QPainterPath frontFace()
{
    return Shapes::polygon({{nearLeft, nearTop}, {nearRight, nearTop}, {nearRight, nearBottom}, {nearLeft, nearBottom}});
}

QPainterPath capFace()
{
    return Shapes::polygon({{nearLeft, nearTop},
                            {nearLeft + depth, nearTop - depth},
                            {nearRight + depth, nearTop - depth},
                            {nearRight, nearTop}});
}

QPainterPath sideFace()
{
    return Shapes::polygon({{nearRight, nearTop},
                            {nearRight + depth, nearTop - depth},
                            {nearRight + depth, nearBottom - depth},
                            {nearRight, nearBottom}});
}

enum class Role { Front, Cap, Side };

Role roleOf(Face face)
{
    switch (face) {
    case Face::Front: return Role::Front;
    case Face::Top:
    case Face::Bottom: return Role::Cap;
    case Face::Left:
    case Face::Right: return Role::Side;
    }
    return Role::Front;
}

void mirrorFor(QPainter &painter, Face face)
{
    if (face == Face::Left) {
        painter.translate(24.0, 0.0);
        painter.scale(-1.0, 1.0);
    } else if (face == Face::Bottom) {
        painter.translate(0.0, 24.0);
        painter.scale(1.0, -1.0);
    }
}

} // namespace

void drawCube(QPainter &painter, Face highlighted)
{
    painter.save();
    mirrorFor(painter, highlighted);
    const Role lit = roleOf(highlighted);
    auto shade = [&](Role role, const QColor &plain) { return role == lit ? accent : plain; };
    Shapes::fillOutlined(painter, capFace(), shade(Role::Cap, cloud), ink);
    Shapes::fillOutlined(painter, sideFace(), shade(Role::Side, QColor(0xa9, 0xb7, 0xc0)), ink);
    Shapes::fillOutlined(painter, frontFace(), shade(Role::Front, mist), ink);
    painter.restore();
}

} // namespace ViewIcons
