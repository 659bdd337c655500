#pragma once

#include <QMdiArea>

class BufferData;
class BufferSubWindow;

// The central area: one sub-window per shown buffer, over the company logo. A buffer dragged from the
// device tree and dropped here opens its view.
class MdiArea : public QMdiArea {
    Q_OBJECT

public:
    static constexpr const char* DragMimeType = "application/x-qabstractitemmodeldatalist";

    explicit MdiArea(QWidget* parent = nullptr);

    // Opens a view and switches its node's map on (with a use count).
    BufferSubWindow* openView(BufferData* buffer);
    // Builds a new view of a buffer whose old one was closed for a rebuild; no property is touched.
    BufferSubWindow* reopenView(BufferData* buffer);

    // "%1 [%2 - %3]": the buffer's name, its device's model and serial number.
    static QString titleFor(BufferData* buffer);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    BufferSubWindow* createView(BufferData* buffer);
};
