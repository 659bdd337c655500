#include "views/MdiArea.h"

#include "Zerlane/Zerlane.h"
#include "app/shared/ViewerLog.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "views/BufferDisplayWidget.h"
#include "views/BufferSubWindow.h"
#include "views/StandardDeviationDisplayWidget.h"
#include "views/TileLayout.h"

#include <QBrush>
#include <QDataStream>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QOpenGLContext>
#include <QOpenGLWidget>
#include <QScrollBar>
#include <QStyle>

using Zerlane::Utils::Format;

MdiArea::MdiArea(QWidget* parent)
    : QMdiArea(parent)
{
    setBackground(QBrush(QImage(":/images/logo_hallmere-700x372.png")));
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    // Views larger than the area are scrolled to, never cut off.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    compositeThroughOpenGl();
}

// A window that holds an OpenGL widget composites through OpenGL, and switching to that re-creates its
// native window. Done when the first view opens, the switch loses the release of the double click that
// opened it: the tree keeps the pointer, and no view sees it hover, until the next click. So the
// window holds a hidden OpenGL widget from the start, where the platform can host OpenGL widgets at
// all: the windowless ones (offscreen, minimal) cannot, and there the widget breaks every repaint.
void MdiArea::compositeThroughOpenGl()
{
    const QString platform = QGuiApplication::platformName();
    const bool windowed = platform == "xcb" || platform.startsWith("wayland") || platform == "eglfs";
    QOpenGLContext probe;
    if (!windowed || !probe.create())
        return;
    auto* placeholder = new QOpenGLWidget(this);
    placeholder->hide();
}

QList<QMdiSubWindow*> MdiArea::tileableSubWindows() const
{
    QList<QMdiSubWindow*> windows;
    for (QMdiSubWindow* window : subWindowList(CreationOrder)) {
        if (!window->isHidden() && !window->isMinimized())
            windows << window;
    }
    return windows;
}

void MdiArea::scrollToOrigin()
{
    horizontalScrollBar()->setValue(0);
    verticalScrollBar()->setValue(0);
}

void MdiArea::tileSubWindows()
{
    const QList<QMdiSubWindow*> windows = tileableSubWindows();
    QSize minimum;
    for (QMdiSubWindow* window : windows) {
        if (window->isMaximized())
            window->showNormal();
        minimum = minimum.expandedTo(window->minimumSizeHint()).expandedTo(window->minimumSize());
    }
    scrollToOrigin();
    const QList<QRect> tiles = TileLayout::arrange(int(windows.size()), maximumViewportSize(), minimum,
                                                   style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this));
    for (qsizetype i = 0; i < windows.size(); ++i)
        windows[i]->setGeometry(tiles[i]);
}

QString MdiArea::titleFor(BufferData* buffer)
{
    try {
        const Zerlane::Device& device = buffer->node->device->device;
        return QString("%1 [%2 - %3]")
            .arg(buffer->typeName(), QString::fromStdString(Zerlane::Device::Model_toString(device.getModel())),
                 QString::fromStdString(device.getSerialNumber()));
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Format("Could not create sub-window title: %") % e.getMessage());
        return QString();
    }
}

BufferSubWindow* MdiArea::createView(BufferData* buffer, bool rebuilt)
{
    auto* view = buffer->type == BufferData::StandardDeviation ? new StandardDeviationDisplayWidget()
                                                                : new BufferDisplayWidget();
    view->setViewContext(m_context);
    auto* window = new BufferSubWindow(buffer, view, titleFor(buffer));
    connect(window, &BufferSubWindow::closing, this, &MdiArea::viewClosing);
    addSubWindow(window);
    window->show();
    emit viewOpened(buffer, rebuilt);
    return window;
}

BufferSubWindow* MdiArea::openView(BufferData* buffer)
{
    return createView(buffer, false);
}

BufferSubWindow* MdiArea::reopenView(BufferData* buffer)
{
    return createView(buffer, true);
}

void MdiArea::dragEnterEvent(QDragEnterEvent* event)
{
    event->acceptProposedAction();
}

void MdiArea::dragMoveEvent(QDragMoveEvent* event)
{
    event->acceptProposedAction();
}

void MdiArea::dropEvent(QDropEvent* event)
{
    QByteArray bytes = event->mimeData()->data(DragMimeType);
    QDataStream stream(&bytes, QIODevice::ReadOnly);
    qint64 address = 0;
    stream >> address;
    // Accepted whatever it carried; only the window can tell a record of this process from any number.
    if (stream.status() == QDataStream::Ok && address != 0)
        emit recordDropped(quintptr(address));
    event->acceptProposedAction();
}
