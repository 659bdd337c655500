#pragma once

class DeviceNodeBufferData;
class NodeData;
class QString;

// What the camera manager tells the program's window about the records it changes, so that the
// window can refresh tree rows, check marks and views, and show the manager's warnings. The manager
// knows only this interface, never the window.
//
// Each call comes on the thread that made the change: the GUI thread for registration, control and
// properties set from the window, the worker for configurations. An implementation that touches
// widgets moves the work to the GUI thread itself.
class CameraManagerListener {
public:
    // A node's or device's registration was asked to change (whether or not it did): its row and the
    // register action show the record's flag now.
    virtual void registrationChanged(DeviceNodeBufferData* record) = 0;
    // Control of a node or device was asked to change; for a device its nodes followed it.
    virtual void controlChanged(DeviceNodeBufferData* record) = 0;
    // A property of the record was set successfully.
    virtual void propertySet(DeviceNodeBufferData* record) = 0;
    // A node's configuration was applied or stored; its buffers start over.
    virtual void configurationChanged(NodeData* node) = 0;
    // A failure the user must read ("Could not set property %1: %2" and the like).
    virtual void showWarning(const QString& text) = 0;

protected:
    ~CameraManagerListener() = default;
};
