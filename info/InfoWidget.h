#pragma once

#include <QScrollArea>

class DeviceData;
class NodeData;

// The right-hand info panel. It shows one content widget at a time and never swaps it under an open
// modal dialog: a change made meanwhile is postponed until the last modal widget has closed.
// The device and node pages with their property editors are not built yet: the panel names what is
// selected in one line.
class InfoWidget : public QScrollArea {
    Q_OBJECT

public:
    explicit InfoWidget(QWidget* parent = nullptr);

    void showMessage(const QString& text);
    void showNothing();
    void showDevice(DeviceData* device);
    void showNode(NodeData* node);
    // Offers to apply configuration edits of the node shown now; there are none to offer yet.
    void askToApplyPendingChanges();

    QWidget* content() const { return m_content; }

protected:
    bool event(QEvent* event) override;

private:
    void install(QWidget* widget);

    QWidget* m_content = nullptr;
};
