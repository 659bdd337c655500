#pragma once

#include <QMdiSubWindow>
#include <QPoint>
#include <QSize>

class BufferData;

// The sub-window of one shown buffer. While it exists the buffer is shown: the two are linked both
// ways. It remembers its last normal geometry for the workspace. When it closes it unlinks, lets its
// view drop the buffer, and reports `closing`: what the view held in the program (samples, the map
// property, the record) is released by whoever listens.
class BufferSubWindow : public QMdiSubWindow {
    Q_OBJECT

public:
    BufferSubWindow(BufferData* buffer, QWidget* view, const QString& title);

    BufferData* buffer() const { return m_buffer; }
    // The buffer record is going away: forget it without touching it.
    void clearBuffer() { m_buffer = nullptr; }
    QPoint lastNormalPosition() const { return m_normalPosition; }
    QSize lastNormalSize() const { return m_normalSize; }

signals:
    // The sub-window is closing and no longer shows the buffer.
    void closing(BufferData* buffer);

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
