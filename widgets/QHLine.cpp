#include "widgets/QHLine.h"

QHLine::QHLine(QWidget* parent, Qt::WindowFlags flags) : QFrame(parent, flags)
{
    setFrameShape(QFrame::HLine);
    setFrameShadow(QFrame::Plain);
}
