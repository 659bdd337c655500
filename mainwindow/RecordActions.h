#pragma once

#include <QIcon>

class DeviceData;
class DeviceNodeBufferData;
class NodeData;
class QAction;

// The window's four register and control actions, kept in step with the selected record and with
// the records' flags: with a node (or one of its buffers) selected the node actions show that node's
// kind and marks, the device actions its device's marks; with a device selected the node actions are
// hidden; with nothing selected only "Register device" stays, unchecked (it is never shown or hidden
// here).
class RecordActions {
public:
    RecordActions(QAction* registerNode, QAction* controlNode, QAction* registerDevice, QAction* controlDevice);

    void showSelection(DeviceNodeBufferData* record);
    // The record's flag changed (or was asked to): its action shows the flag now.
    void showRegistration(DeviceNodeBufferData* record);
    void showControl(DeviceNodeBufferData* record);

private:
    void showNode(const NodeData* node);
    void hideNodeActions();
    void showDevice(const DeviceData* device);

    QAction* m_registerNode;
    QAction* m_controlNode;
    QAction* m_registerDevice;
    QAction* m_controlDevice;
    QIcon m_audioControlIcon;
    QIcon m_audioRegisterIcon;
    QIcon m_colourControlIcon;
    QIcon m_colourRegisterIcon;
    QIcon m_depthControlIcon;
    QIcon m_depthRegisterIcon;
};
