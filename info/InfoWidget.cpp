#include "info/InfoWidget.h"

#include "Zerlane/Zerlane.h"
#include "app/shared/TextUtils.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "worker/InfoWidgetSetWidgetEvent.h"
#include "worker/PostponedCalls.h"

#include <QApplication>
#include <QLabel>


InfoWidget::InfoWidget(QWidget* parent)
    : QScrollArea(parent)
{
    setWidgetResizable(true);
    showMessage("No device or node selected");
}

void InfoWidget::showMessage(const QString& text)
{
    install(new QLabel(QString("\n     %1").arg(text)));
}

void InfoWidget::showNothing()
{
    showMessage("No device or node selected");
}

void InfoWidget::showDevice(DeviceData* device)
{
    showMessage(QString("Device %1 selected").arg(deviceText(device->device)));
}

void InfoWidget::showNode(NodeData* node)
{
    showMessage(QString("%1 of %2 selected").arg(nodeKindText(node->node), deviceText(node->device->device)));
}

void InfoWidget::askToApplyPendingChanges()
{
}

void InfoWidget::install(QWidget* widget)
{
    m_content = widget;
    if (QApplication::activeModalWidget()) {
        PostponedCalls::instance()->setWidget(this, widget);
        return;
    }
    setWidget(widget);
}

bool InfoWidget::event(QEvent* event)
{
    if (event->type() == InfoWidgetSetWidgetEvent::eventType())
        install(static_cast<InfoWidgetSetWidgetEvent*>(event)->widget());
    return QScrollArea::event(event);
}
