#pragma once

#include <QSpinBox>

class QWheelEvent;

// A QSpinBox that ignores the mouse wheel: the value never changes by accident, and the wheel goes on to
// the parent (a scrolling panel then scrolls).
class ZRSpinBox : public QSpinBox {
    Q_OBJECT
public:
    explicit ZRSpinBox(QWidget* parent = nullptr);

protected:
    void wheelEvent(QWheelEvent* event) override;
};
