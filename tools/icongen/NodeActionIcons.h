#pragma once

#include "KindSymbols.h"

class QPainter;

// The 24 x 24 register and control actions of a device or node: the kind's tree symbol with a badge in the
// lower right corner, a plus for "register" (subscribe to its samples) and a key for "control".
namespace NodeActionIcons {

void drawRegister(QPainter &painter, KindSymbols::Kind kind);
void drawControl(QPainter &painter, KindSymbols::Kind kind);

} // namespace NodeActionIcons
