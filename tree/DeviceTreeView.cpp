#include "tree/DeviceTreeView.h"

#include "camera/DeviceNodeBufferData.h"
#include "tree/DeviceTreeModel.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QProxyStyle>
#include <QStyleOptionMenuItem>

namespace {

// Menus draw a checked action that has an icon as its icon on a sunken panel, hard to tell from an
// unchecked one. Drawn without the icon, a checkable action gets the same check box as any other.
class CheckMarkMenuStyle : public QProxyStyle {
public:
    CheckMarkMenuStyle()
        : QProxyStyle(QApplication::style()->name())
    {
    }

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override
    {
        const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
        if (element != CE_MenuItem || !item || item->checkType == QStyleOptionMenuItem::NotCheckable) {
            QProxyStyle::drawControl(element, option, painter, widget);
            return;
        }
        QStyleOptionMenuItem withoutIcon(*item);
        withoutIcon.icon = QIcon();
        QProxyStyle::drawControl(element, &withoutIcon, painter, widget);
    }
};

} // namespace

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
    CheckMarkMenuStyle style; // outlives the menu
    QMenu menu(this);
    menu.setStyle(&style);
    menu.addActions(m_nodeActions);
    menu.exec(event->globalPos());
}
