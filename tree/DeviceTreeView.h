#pragma once

#include <QTreeView>

class DeviceNodeBufferData;
class QAction;

// The device tree. It reports the record of the first selected row whenever the selection changes,
// and offers the node actions it is given in a context menu on node rows; the window decides what a
// selection means and carries out the actions.
class DeviceTreeView : public QTreeView {
    Q_OBJECT

public:
    explicit DeviceTreeView(QWidget* parent = nullptr);

    // The actions of the context menu of a node row, in menu order (not owned).
    void setNodeActions(const QList<QAction*>& actions);
    // The record of the first selected row, or null.
    DeviceNodeBufferData* selectedRecord() const;

signals:
    // The selection changed; `record` is the first newly selected row's record, null when the
    // selection became empty.
    void selectedRecordChanged(DeviceNodeBufferData* record);

protected:
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    QList<QAction*> m_nodeActions;
};
