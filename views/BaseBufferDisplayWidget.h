#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

class BufferData;

// A view of one buffer inside a sub-window. The main window, the sub-window and the tree talk to every
// view through these operations.
class BaseBufferDisplayWidget : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

    // Recomputes the readout under the pointer and schedules a repaint.
    virtual void refresh() = 0;
    virtual void repaintDisplay() = 0;
    virtual void clearRepaintCount() = 0;
    // Forgets what was drawn of both sample slots, then refreshes.
    virtual void reset() = 0;
    virtual void setBuffer(BufferData* buffer) = 0;
    virtual void setInteractiveInfo(const QString& text, const QColor& color) = 0;
    // Clears the line when the node is registered, else says "Node not registered" in red and resets.
    virtual void showRegistrationState() = 0;
    virtual void requestReload() = 0;
    virtual bool isThreeDimensional() const = 0;
    virtual void setInfo(const QString& text) = 0;
};
