#include "views/BufferSubWindow.h"

#include "camera/BufferData.h"
#include "camera/NodeData.h"
#include "views/BaseBufferDisplayWidget.h"

#include <QCloseEvent>
#include <QIcon>

BufferSubWindow::BufferSubWindow(BufferData* buffer, QWidget* view, const QString& title)
    : QMdiSubWindow(nullptr, Qt::WindowFlags())
    , m_buffer(buffer)
{
    const QIcon icon(":/images/zr32.png");
    if (auto* display = qobject_cast<BaseBufferDisplayWidget*>(view)) {
        display->setBuffer(buffer);
        if (!buffer->node->registered) {
            display->setInteractiveInfo("Node not registered", QColor(255, 0, 0));
            buffer->notRegisteredShown = true;
        }
    }
    setWidget(view);
    setWindowTitle(title);
    setWindowIcon(icon);
    setAttribute(Qt::WA_DeleteOnClose);

    buffer->subWindow = this;
    buffer->shown = true;
    buffer->displayed = true;
    buffer->reopening = false;
    recordNormalGeometry();
}

void BufferSubWindow::recordNormalGeometry()
{
    const QRect frame = frameGeometry();
    m_normalPosition = pos();
    m_normalSize = QSize(frame.right() - frame.left() + 1, frame.bottom() - frame.top() + 1);
}

void BufferSubWindow::resizeEvent(QResizeEvent* event)
{
    QMdiSubWindow::resizeEvent(event);
    if (!isMaximized() && !isMinimized())
        recordNormalGeometry();
}

void BufferSubWindow::moveEvent(QMoveEvent* event)
{
    QMdiSubWindow::moveEvent(event);
    if (!isMaximized() && !isMinimized())
        recordNormalGeometry();
}

void BufferSubWindow::closeEvent(QCloseEvent* event)
{
    if (BufferData* buffer = m_buffer) {
        // The sub-window is deleted later, and the record may be gone by then: the view lets go now.
        if (auto* display = qobject_cast<BaseBufferDisplayWidget*>(widget()))
            display->setBuffer(nullptr);
        buffer->subWindow = nullptr;
        buffer->shown = false;
        buffer->displayed = false;
        buffer->notRegisteredShown = false;
        m_buffer = nullptr;
        emit closing(buffer);
    }
    event->accept();
    QMdiSubWindow::closeEvent(event);
}
