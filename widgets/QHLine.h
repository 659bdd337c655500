#pragma once

#include <QFrame>

// A plain horizontal separator line.
class QHLine : public QFrame {
    Q_OBJECT
public:
    explicit QHLine(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
};
