#include "widgets/ZRComboBox.h"

#include <QWheelEvent>

ZRComboBox::ZRComboBox(QWidget* parent) : QComboBox(parent) {}

void ZRComboBox::wheelEvent(QWheelEvent* event)
{
    event->ignore();
}
