#include "views/MdiArea.h"

#include "Zerlane/Zerlane.h"
#include "app/TextUtils.h"
#include "app/ViewerLog.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "mainwindow/ZerlaneViewer.h"
#include "views/BufferDisplayWidget.h"
#include "views/BufferSubWindow.h"
#include "views/DisplayWidget.h"

#include <QBrush>
#include <QDataStream>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QImage>
#include <QMimeData>

using Zerlane::Utils::Format;

MdiArea::MdiArea(QWidget* parent)
    : QMdiArea(parent)
{
    setBackground(QBrush(QImage(":/images/logo_hallmere-700x372.png")));
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
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

BufferSubWindow* MdiArea::createView(BufferData* buffer)
{
    // The standard deviation view with its statistics is not built yet: that buffer is shown as an image.
    auto* view = new BufferDisplayWidget();
    auto* window = new BufferSubWindow(buffer, view, titleFor(buffer));
    ZerlaneViewer* mainWindow = ZerlaneViewer::existingInstance();
    if (mainWindow)
        view->displayWidget()->setMirror(mainWindow->mirrorView());
    addSubWindow(window);
    window->show();
    if (mainWindow)
        mainWindow->onViewOpened(buffer);
    return window;
}

BufferSubWindow* MdiArea::openView(BufferData* buffer)
{
    BufferSubWindow* window = createView(buffer);
    const QString property = mapEnableName(buffer->type);
    if (!property.isEmpty()) {
        CameraManager* manager = CameraManager::instance();
        manager->incrementPropertyUse(property);
        manager->setProperty<bool>(buffer->node, property, true);
        if (buffer->type == BufferData::Combined)
            manager->setProperty<bool>(buffer->node, "enableConfidenceMap", true);
    }
    return window;
}

BufferSubWindow* MdiArea::reopenView(BufferData* buffer)
{
    return createView(buffer);
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
    // Only a buffer record of this process is opened: the address is looked up, never trusted.
    BufferData* buffer = CameraManager::instance()->findBuffer(quintptr(address));
    if (stream.status() == QDataStream::Ok && buffer && !buffer->subWindow)
        openView(buffer);
    event->acceptProposedAction();
}
