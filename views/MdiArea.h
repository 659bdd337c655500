#pragma once

#include <QMdiArea>

// The central area that holds one sub-window per shown buffer, over the company logo.
class MdiArea : public QMdiArea {
    Q_OBJECT

public:
    explicit MdiArea(QWidget* parent = nullptr);
};
