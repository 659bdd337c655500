#pragma once

#include <QMdiSubWindow>
#include <QPoint>
#include <QSize>

class BufferData;

// The sub-window of one shown buffer. While it exists the buffer is shown: linked both ways, and
// registered with the event thread so that its node's samples are copied into it. It remembers its
// last normal geometry for the workspace, and switches the node's map off when the last view of it
// closes.
class BufferSubWindow : public QMdiSubWindow {
    Q_OBJECT

public:
    BufferSubWindow(BufferData* buffer, QWidget* view, const QString& title);

    BufferData* buffer() const { return m_buffer; }
    // The buffer record is going away: forget it without touching it.
    void clearBuffer() { m_buffer = nullptr; }
    QPoint lastNormalPosition() const { return m_normalPosition; }
    QSize lastNormalSize() const { return m_normalSize; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void recordNormalGeometry();

    BufferData* m_buffer;
    QPoint m_normalPosition;
    QSize m_normalSize;
};
