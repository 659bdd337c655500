#include "widgets/ZRDoubleSpinBox.h"

#include <QWheelEvent>

ZRDoubleSpinBox::ZRDoubleSpinBox(QWidget* parent) : QDoubleSpinBox(parent) {}

void ZRDoubleSpinBox::wheelEvent(QWheelEvent* event)
{
    event->ignore();
}
