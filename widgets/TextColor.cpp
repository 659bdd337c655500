#include "widgets/TextColor.h"

#include <QBrush>
#include <QColor>
#include <QPalette>
#include <QWidget>

void setTextColor(QWidget* widget, const QColor& color)
{
    if (!widget)
        return;
    QPalette palette = widget->palette();
    const QBrush brush(color, Qt::SolidPattern);
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        palette.setBrush(group, QPalette::Text, brush);
        palette.setBrush(group, QPalette::WindowText, brush);
    }
    widget->setPalette(palette);
}
