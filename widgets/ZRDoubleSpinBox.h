#pragma once

#include <QDoubleSpinBox>

class QWheelEvent;

// A QDoubleSpinBox that ignores the mouse wheel: the value never changes by accident, and the wheel goes on to
// the parent (a scrolling panel then scrolls).
class ZRDoubleSpinBox : public QDoubleSpinBox {
    Q_OBJECT
public:
    explicit ZRDoubleSpinBox(QWidget* parent = nullptr);

protected:
    void wheelEvent(QWheelEvent* event) override;
};
