#include "tree/DeviceTreeView.h"

#include "camera/BufferData.h"
#include "Zerlane/Zerlane.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "camera/RecordUtils.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "info/InfoWidget.h"
#include "mainwindow/ZerlaneViewer.h"
#include "tree/DeviceTreeModel.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QMenu>

namespace {

NodeData* nodeOfRecord(DeviceNodeBufferData* record)
{
    if (!record)
        return nullptr;
    if (record->kind() == DeviceNodeBufferData::KindNode)
        return static_cast<NodeData*>(record);
    if (record->kind() == DeviceNodeBufferData::KindBuffer)
        return static_cast<BufferData*>(record)->node;
    return nullptr;
}

// The node actions are offered only while a node is selected.
void hideNodeActions(ZerlaneViewer* window)
{
    for (QAction* action : {window->actionRegisterNode(), window->actionControlNode()}) {
        action->setVisible(false);
        action->setChecked(false);
    }
}

// The device actions show the state of the selected device, or of none when `device` is null.
void showDeviceActions(ZerlaneViewer* window, const DeviceData* device)
{
    window->actionRegisterDevice()->setChecked(device && device->registered);
    window->actionControlDevice()->setVisible(device != nullptr);
    window->actionControlDevice()->setChecked(device && device->controlled);
}

} // namespace

DeviceTreeView::DeviceTreeView(QWidget* parent)
    : QTreeView(parent)
    , m_audioControlIcon(":/images/audio-ctrl.png")
    , m_audioRegisterIcon(":/images/audio-reg.png")
    , m_colourControlIcon(":/images/colour-ctrl.png")
    , m_colourRegisterIcon(":/images/colour-reg.png")
    , m_depthControlIcon(":/images/depth-ctrl.png")
    , m_depthRegisterIcon(":/images/depth-reg.png")
{
}

void DeviceTreeView::setInfoWidget(InfoWidget* infoWidget)
{
    m_infoWidget = infoWidget;
}

NodeData* DeviceTreeView::selectedNode() const
{
    const QModelIndexList indexes = selectedIndexes();
    return indexes.isEmpty() ? nullptr : nodeOfRecord(DeviceTreeModel::recordOf(indexes.first()));
}

DeviceData* DeviceTreeView::selectedDevice() const
{
    const QModelIndexList indexes = selectedIndexes();
    return indexes.isEmpty() ? nullptr : deviceOf(DeviceTreeModel::recordOf(indexes.first()));
}

void DeviceTreeView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    ZerlaneViewer* window = ZerlaneViewer::existingInstance();
    const QModelIndexList indexes = selected.indexes();
    if (indexes.isEmpty()) {
        clearSelectionState();
    } else {
        if (m_infoWidget)
            m_infoWidget->askToApplyPendingChanges();
        DeviceNodeBufferData* record = DeviceTreeModel::recordOf(indexes.first());
        ZerlaneThread::instance()->setCurrentNode(nullptr);
        if (NodeData* node = nodeOfRecord(record))
            showNodeSelection(node);
        else if (record && record->kind() == DeviceNodeBufferData::KindDevice)
            showDeviceSelection(static_cast<DeviceData*>(record));
    }
    if (window)
        window->updateActions();
}

void DeviceTreeView::clearSelectionState()
{
    if (m_infoWidget)
        m_infoWidget->showNothing();
    ZerlaneViewer* window = ZerlaneViewer::existingInstance();
    if (!window)
        return;
    hideNodeActions(window);
    showDeviceActions(window, nullptr);
}

void DeviceTreeView::showNodeSelection(NodeData* node)
{
    ZerlaneThread::instance()->setCurrentNode(node);
    if (m_infoWidget)
        m_infoWidget->showNode(node);
    ZerlaneViewer* window = ZerlaneViewer::existingInstance();
    if (!window)
        return;
    QAction* registerAction = window->actionRegisterNode();
    QAction* controlAction = window->actionControlNode();
    bool known = true;
    if (node->node.is<Zerlane::DepthNode>()) {
        registerAction->setIcon(m_depthRegisterIcon);
        controlAction->setIcon(m_depthControlIcon);
    } else if (node->node.is<Zerlane::ColorNode>()) {
        registerAction->setIcon(m_colourRegisterIcon);
        controlAction->setIcon(m_colourControlIcon);
    } else if (node->node.is<Zerlane::AudioNode>()) {
        registerAction->setIcon(m_audioRegisterIcon);
        controlAction->setIcon(m_audioControlIcon);
    } else {
        known = false;
    }
    registerAction->setVisible(known);
    controlAction->setVisible(known);
    registerAction->setChecked(node->registered);
    controlAction->setChecked(node->controlled);
    showDeviceActions(window, node->device);
}

void DeviceTreeView::showDeviceSelection(DeviceData* device)
{
    if (m_infoWidget)
        m_infoWidget->showDevice(device);
    ZerlaneViewer* window = ZerlaneViewer::existingInstance();
    if (!window)
        return;
    hideNodeActions(window);
    showDeviceActions(window, device);
}

void DeviceTreeView::contextMenuEvent(QContextMenuEvent* event)
{
    const QModelIndexList indexes = selectedIndexes();
    if (indexes.isEmpty())
        return;
    DeviceNodeBufferData* record = DeviceTreeModel::recordOf(indexes.first());
    ZerlaneViewer* window = ZerlaneViewer::existingInstance();
    if (!record || record->kind() != DeviceNodeBufferData::KindNode || !window)
        return;
    QMenu menu(this);
    menu.addAction(window->actionRegisterNode());
    menu.addAction(window->actionControlNode());
    menu.exec(event->globalPos());
}

void DeviceTreeView::toggleNodeRegistration()
{
    NodeData* node = selectedNode();
    if (!node)
        return;
    CameraManager::instance()->registerNode(node, !node->registered);
    if (ZerlaneViewer* window = ZerlaneViewer::existingInstance())
        window->showRegistrationOfViews(node);
}

void DeviceTreeView::toggleNodeControl()
{
    NodeData* node = selectedNode();
    if (!node)
        return;
    CameraManager::instance()->controlNode(node, !node->controlled);
    if (m_infoWidget)
        m_infoWidget->showNode(node);
}

void DeviceTreeView::toggleDeviceRegistration()
{
    if (DeviceData* device = selectedDevice())
        CameraManager::instance()->registerDevice(device, !device->registered);
}

void DeviceTreeView::toggleDeviceControl()
{
    DeviceData* device = selectedDevice();
    if (!device)
        return;
    CameraManager::instance()->controlDevice(device, !device->controlled);
    if (!m_infoWidget)
        return;
    if (NodeData* node = selectedNode())
        m_infoWidget->showNode(node);
    else
        m_infoWidget->showDevice(device);
}
