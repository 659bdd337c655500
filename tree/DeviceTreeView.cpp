#include "tree/DeviceTreeView.h"

#include "camera/DeviceNodeBufferData.h"
#include "tree/DeviceTreeModel.h"

#include <QContextMenuEvent>
#include <QMenu>

DeviceTreeView::DeviceTreeView(QWidget* parent)
    : QTreeView(parent)
{
}

void DeviceTreeView::setNodeActions(const QList<QAction*>& actions)
{
    m_nodeActions = actions;
}

DeviceNodeBufferData* DeviceTreeView::selectedRecord() const
{
    const QModelIndexList indexes = selectedIndexes();
    return indexes.isEmpty() ? nullptr : DeviceTreeModel::recordOf(indexes.first());
}

void DeviceTreeView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    const QModelIndexList indexes = selected.indexes();
    emit selectedRecordChanged(indexes.isEmpty() ? nullptr : DeviceTreeModel::recordOf(indexes.first()));
}

void DeviceTreeView::contextMenuEvent(QContextMenuEvent* event)
{
    DeviceNodeBufferData* record = selectedRecord();
    if (!record || record->kind() != DeviceNodeBufferData::KindNode || m_nodeActions.isEmpty())
        return;
    QMenu menu(this);
    menu.addActions(m_nodeActions);
    menu.exec(event->globalPos());
}
