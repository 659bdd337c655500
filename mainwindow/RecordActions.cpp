#include "mainwindow/RecordActions.h"

#include "Zerlane/Zerlane.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "camera/RecordUtils.h"

#include <QAction>

RecordActions::RecordActions(QAction* registerNode, QAction* controlNode, QAction* registerDevice,
                             QAction* controlDevice)
    : m_registerNode(registerNode)
    , m_controlNode(controlNode)
    , m_registerDevice(registerDevice)
    , m_controlDevice(controlDevice)
    , m_audioControlIcon(":/images/audio-ctrl.png")
    , m_audioRegisterIcon(":/images/audio-reg.png")
    , m_colourControlIcon(":/images/colour-ctrl.png")
    , m_colourRegisterIcon(":/images/colour-reg.png")
    , m_depthControlIcon(":/images/depth-ctrl.png")
    , m_depthRegisterIcon(":/images/depth-reg.png")
{
}

void RecordActions::showSelection(DeviceNodeBufferData* record)
{
    if (NodeData* node = nodeOf(record)) {
        showNode(node);
        showDevice(node->device);
    } else {
        hideNodeActions();
        showDevice(deviceOf(record));
    }
}

void RecordActions::showNode(const NodeData* node)
{
    const Zerlane::Node& handle = node->node;
    bool known = true;
    if (handle.is<Zerlane::DepthNode>()) {
        m_registerNode->setIcon(m_depthRegisterIcon);
        m_controlNode->setIcon(m_depthControlIcon);
    } else if (handle.is<Zerlane::ColorNode>()) {
        m_registerNode->setIcon(m_colourRegisterIcon);
        m_controlNode->setIcon(m_colourControlIcon);
    } else if (handle.is<Zerlane::AudioNode>()) {
        m_registerNode->setIcon(m_audioRegisterIcon);
        m_controlNode->setIcon(m_audioControlIcon);
    } else {
        known = false; // other kinds keep the icons they had
    }
    m_registerNode->setVisible(known);
    m_controlNode->setVisible(known);
    m_registerNode->setChecked(node->registered);
    m_controlNode->setChecked(node->controlled);
}

void RecordActions::hideNodeActions()
{
    for (QAction* action : {m_registerNode, m_controlNode}) {
        action->setVisible(false);
        action->setChecked(false);
    }
}

// With no device, the device actions show nothing.
void RecordActions::showDevice(const DeviceData* device)
{
    m_registerDevice->setChecked(device && device->registered);
    m_controlDevice->setVisible(device != nullptr);
    m_controlDevice->setChecked(device && device->controlled);
}

void RecordActions::showRegistration(DeviceNodeBufferData* record)
{
    if (NodeData* node = nodeOf(record))
        m_registerNode->setChecked(node->registered);
    else if (DeviceData* device = deviceOf(record))
        m_registerDevice->setChecked(device->registered);
}

void RecordActions::showControl(DeviceNodeBufferData* record)
{
    if (NodeData* node = nodeOf(record))
        m_controlNode->setChecked(node->controlled);
    else if (DeviceData* device = deviceOf(record))
        m_controlDevice->setChecked(device->controlled);
}
