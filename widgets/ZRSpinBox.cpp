#include "widgets/ZRSpinBox.h"

#include <QWheelEvent>

ZRSpinBox::ZRSpinBox(QWidget* parent) : QSpinBox(parent) {}

void ZRSpinBox::wheelEvent(QWheelEvent* event)
{
    event->ignore();
}
