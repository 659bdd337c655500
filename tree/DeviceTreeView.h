#pragma once

#include <QIcon>
#include <QTreeView>

class DeviceData;
class InfoWidget;
class NodeData;

// The device tree. Its selection makes the event thread's current node, switches the info panel and
// keeps the main window's register and control actions in step; it carries out their toggles.
class DeviceTreeView : public QTreeView {
    Q_OBJECT

public:
    explicit DeviceTreeView(QWidget* parent = nullptr);

    void setInfoWidget(InfoWidget* infoWidget);

    void toggleNodeRegistration();
    void toggleNodeControl();
    void toggleDeviceRegistration();
    void toggleDeviceControl();

protected:
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void showNodeSelection(NodeData* node);
    void showDeviceSelection(DeviceData* device);
    void clearSelectionState();
    // The node and the device of the first selected item (a buffer stands for its node).
    NodeData* selectedNode() const;
    DeviceData* selectedDevice() const;

    InfoWidget* m_infoWidget = nullptr;
    QIcon m_audioControlIcon;
    QIcon m_audioRegisterIcon;
    QIcon m_colourControlIcon;
    QIcon m_colourRegisterIcon;
    QIcon m_depthControlIcon;
    QIcon m_depthRegisterIcon;
};
