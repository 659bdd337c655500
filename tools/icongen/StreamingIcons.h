#pragma once

class QPainter;

// The 24 x 24 streaming buttons of the tool bar and the round status lamp beside them.
namespace StreamingIcons {

void drawPlay(QPainter &painter);
void drawPause(QPainter &painter);
void drawStop(QPainter &painter);

void drawStatusStreaming(QPainter &painter);
void drawStatusFrozen(QPainter &painter);
void drawStatusStopped(QPainter &painter);

} // namespace StreamingIcons
