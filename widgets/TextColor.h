#pragma once

class QColor;
class QWidget;

// Gives a widget's text and window text, in every colour group, a solid brush of `color`.
void setTextColor(QWidget* widget, const QColor& color);
