#pragma once

#include <QComboBox>

class QWheelEvent;

// A QComboBox that ignores the mouse wheel: the value never changes by accident, and the wheel goes on to
// the parent (a scrolling panel then scrolls).
class ZRComboBox : public QComboBox {
    Q_OBJECT
public:
    explicit ZRComboBox(QWidget* parent = nullptr);

protected:
    void wheelEvent(QWheelEvent* event) override;
};
