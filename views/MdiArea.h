#pragma once

#include <QMdiArea>

class BufferData;
class BufferSubWindow;
class ViewContext;

// The central area: one sub-window per shown buffer, over the company logo. It builds the views and
// reports what happens to them; what a view switches on or holds in the program is the window's to
// decide. A record dragged from the device tree and dropped here is reported by its address, which
// only the window can check.
class MdiArea : public QMdiArea {
    Q_OBJECT

public:
    static constexpr const char* DragMimeType = "application/x-qabstractitemmodeldatalist";

    explicit MdiArea(QWidget* parent = nullptr);

    // Handed to every view this area builds (not owned).
    void setViewContext(ViewContext* context) { m_context = context; }

    // Opens a view of the buffer: builds its sub-window, shows it and reports viewOpened(buffer, false).
    BufferSubWindow* openView(BufferData* buffer);
    // Builds a new view of a buffer whose old one was closed for a rebuild: viewOpened(buffer, true).
    BufferSubWindow* reopenView(BufferData* buffer);

    // "%1 [%2 - %3]": the buffer's name, its device's model and serial number.
    static QString titleFor(BufferData* buffer);

public slots:
    // Tiles the shown sub-windows over the area as it is: tiles keep the views' minimum size, and
    // what does not fit runs on below for the area to scroll. The window around is never resized.
    // It stands in for QMdiArea's slot of the same name, which grows the window to fit the tiles,
    // so that whatever tiles this area, by pointer or by the slot's name, gets this layout.
    void tileSubWindows();

signals:
    // A view of the buffer is shown; `rebuilt` when it replaces one closed for a rebuild.
    void viewOpened(BufferData* buffer, bool rebuilt);
    // A view's sub-window is closing; the buffer is no longer shown.
    void viewClosing(BufferData* buffer);
    // A drag from the device tree was dropped here, carrying a record's address.
    void recordDropped(quintptr address);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void compositeThroughOpenGl();
    void scrollToOrigin();
    QList<QMdiSubWindow*> tileableSubWindows() const;
    BufferSubWindow* createView(BufferData* buffer, bool rebuilt);

    ViewContext* m_context = nullptr;
};
