#include "worker/WorkingThread.h"

#include "Zerlane/Utils/Format.h"
#include "app/shared/ViewerLog.h"
#include "events/CameraManager.h"
#include "worker/Settings.h"

#include <cmath>
#include <optional>

WorkingThread::WorkingThread() = default;

WorkingThread::~WorkingThread()
{
    quit();
    wait();
}

void WorkingThread::run()
{
    m_manager = CameraManager::instance();
    exec();
}

template <class Apply>
void WorkingThread::applyConfiguration(NodeData* nodeData, const char* nodeName, Apply apply)
{
    const QString failure = QString("Could not set %1 Node configuration :   \n\n").arg(nodeName);
    try {
        apply();
    } catch (const Zerlane::ArgumentException&) {
        emit popup(2, failure + "Invalid configuration");
    } catch (const Zerlane::Exception& e) {
        emit popup(2, failure + QString::fromStdString(e.getMessage()));
    }
    emit jobDone(nodeData);
}

void WorkingThread::onSetDepthConfig(NodeData* nodeData, Zerlane::DepthNode::Configuration config)
{
    applyConfiguration(nodeData, "Depth", [&] { m_manager->setDepthConfiguration(nodeData, config, true); });
}

void WorkingThread::onSetColorConfig(NodeData* nodeData, Zerlane::ColorNode::Configuration config)
{
    applyConfiguration(nodeData, "Color", [&] { m_manager->setColorConfiguration(nodeData, config, true); });
}

void WorkingThread::onSetAudioConfig(NodeData* nodeData, Zerlane::AudioNode::Configuration config)
{
    applyConfiguration(nodeData, "Audio", [&] { m_manager->setAudioConfiguration(nodeData, config, true); });
}

void WorkingThread::onStartStreaming()
{
    try {
        m_manager->startNodes();
        emit streamingStarted(true);
    } catch (const Zerlane::Exception& e) {
        emit streamingStarted(false);
        emit popup(2, QString("Cannot start streaming : %1").arg(QString::fromStdString(e.getMessage())));
    }
}

void WorkingThread::onStopStreaming()
{
    try {
        m_manager->stopNodes();
        emit streamingStopped(true);
    } catch (const Zerlane::Exception& e) {
        emit streamingStopped(false);
        emit popup(2, QString("Cannot stop streaming : %1").arg(QString::fromStdString(e.getMessage())));
    }
}

void WorkingThread::onDeviceAdded(DeviceData*)
{
}

void WorkingThread::onNodeAdded(NodeData* nodeData)
{
    restoreNode(nodeData);
    emit jobDone(nodeData); // on every path, once
}

// ---- Workspace restore -------------------------------------------------------------------------------

namespace {

void logWarning(const std::string& message)
{
    ViewerLog::warning(message);
}

// The device's serial number, asked again while the camera has not reported it yet; empty when it
// never comes or cannot be read (logged).
QString serialNumberOf(NodeData* node)
{
    int attemptsLeft = node->node.is<Zerlane::DepthNode>() ? 1 : 5;
    try {
        for (;;) {
            const std::string serial = node->device->device.getSerialNumber();
            if (!serial.empty())
                return QString::fromStdString(serial);
            if (--attemptsLeft == 0) {
                logWarning("serial number is an empty string");
                return QString();
            }
            QThread::msleep(500);
        }
    } catch (const Zerlane::Exception& e) {
        logWarning(Zerlane::Utils::Format("could not get serial number: %") % e.getMessage());
        return QString();
    }
}

// The first saved node of that type on a device of that serial number, or -1.
int savedNodeOf(const QString& typeName, const QString& serial)
{
    for (int number : Settings::workspaceNodeNumbers()) {
        if (Settings::workspaceNodeType(number) != typeName)
            continue;
        const int device = Settings::workspaceNodeDevice(number);
        if (device >= 0 && Settings::workspaceDeviceSerial(device) == serial)
            return number;
    }
    return -1;
}

// A saved property value converted to the property's type; nothing when it is missing or does not
// convert (the camera keeps its value).
std::optional<Zerlane::PropertyValue> savedValue(const QVariant& saved, Zerlane::PropertyType type)
{
    if (!saved.isValid())
        return std::nullopt;
    const QString text = saved.toString().trimmed();
    bool ok = false;
    switch (type) {
    case Zerlane::PropertyType::Bool:
        if (saved.typeId() == QMetaType::Bool)
            return Zerlane::PropertyValue(saved.toBool());
        if (text == "true" || text == "false")
            return Zerlane::PropertyValue(text == "true");
        return std::nullopt;
    case Zerlane::PropertyType::Int: {
        const int value = text.toInt(&ok);
        return ok ? std::optional(Zerlane::PropertyValue(int32_t(value))) : std::nullopt;
    }
    case Zerlane::PropertyType::Float: {
        const float value = text.toFloat(&ok);
        return ok && std::isfinite(value) ? std::optional(Zerlane::PropertyValue(value)) : std::nullopt;
    }
    case Zerlane::PropertyType::String:
        return Zerlane::PropertyValue(saved.toString().toStdString());
    default:
        return std::nullopt;
    }
}

} // namespace

void WorkingThread::restoreNode(NodeData* node)
{
    if (node->disconnected)
        return;
    QString typeName;
    try {
        typeName = QString::fromStdString(node->node.getType().name());
    } catch (const Zerlane::Exception& e) {
        logWarning(Zerlane::Utils::Format("could not get node type: %") % e.getMessage());
        return;
    }
    const QString serial = serialNumberOf(node);
    if (serial.isEmpty())
        return;
    const int saved = savedNodeOf(typeName, serial);
    if (saved < 0)
        return;

    // The views first, so that they exist when the first frames of the new configuration arrive.
    reopenViews(node, saved);
    const bool controlTaken = takeControlFor(node);
    restoreConfiguration(node, saved);
    restoreProperties(node, saved);
    if (controlTaken)
        releaseControlOf(node);
    if (Settings::workspaceNodeRegistered(saved))
        emit registerNode(node);
    if (Settings::workspaceNodeControlled(saved))
        emit controlNode(node);
}

void WorkingThread::reopenViews(NodeData* node, int saved)
{
    for (int number : Settings::workspaceBufferNumbers()) {
        if (Settings::workspaceBufferNode(number) != saved)
            continue;
        const int kind = Settings::workspaceBufferType(number);
        BufferData* buffer = kind >= 0 ? node->buffer(uint32_t(kind)) : nullptr;
        if (!buffer)
            continue; // a kind the node no longer offers
        emit addBuffer(buffer, Settings::workspaceBufferPosition(number), Settings::workspaceBufferSize(number),
                       Settings::workspaceBufferIsMaximized(number), Settings::workspaceBufferCameraX(number),
                       Settings::workspaceBufferCameraY(number), Settings::workspaceBufferCameraZ(number),
                       Settings::workspaceBufferCameraDistance(number), Settings::workspaceBufferCameraPan(number),
                       Settings::workspaceBufferCameraTilt(number));
    }
}

bool WorkingThread::takeControlFor(NodeData* node)
{
    if (node->device->controlled)
        return false;
    try {
        m_manager->context().requestControl(node->node, 0);
        return true;
    } catch (const Zerlane::Exception& e) {
        logWarning(Zerlane::Utils::Format("could not request control for the restore: %") % e.getMessage());
        return false;
    }
}

void WorkingThread::releaseControlOf(NodeData* node)
{
    try {
        m_manager->context().releaseControl(node->node);
    } catch (const Zerlane::Exception& e) {
        logWarning(Zerlane::Utils::Format("could not release control after the restore: %") % e.getMessage());
    }
}

void WorkingThread::restoreConfiguration(NodeData* node, int saved)
{
    try {
        if (node->node.is<Zerlane::DepthNode>())
            m_manager->setDepthConfiguration(node, Settings::workspaceDepthConfiguration(saved), true);
        else if (node->node.is<Zerlane::AudioNode>())
            m_manager->setAudioConfiguration(node, Settings::workspaceAudioConfiguration(saved), true);
        else if (node->node.is<Zerlane::ColorNode>())
            m_manager->setColorConfiguration(node, Settings::workspaceColorConfiguration(saved), true);
    } catch (const Zerlane::Exception& e) {
        emit popup(2, QString("Could not set node configuration automatically:   \n\n%1")
                          .arg(QString::fromStdString(e.getMessage())));
    }
}

void WorkingThread::restoreProperties(NodeData* node, int saved)
{
    const Zerlane::Interface camera(node->node);
    int failures = 0;
    for (const Zerlane::PropertyBase& property : node->properties) {
        try {
            if (property.isReadOnly())
                continue;
            const QString name = QString::fromStdString(property.name());
            const std::optional<Zerlane::PropertyValue> value =
                savedValue(Settings::workspaceNodeProperty(saved, name), property.type());
            if (value)
                property.setValue(camera, *value);
        } catch (const Zerlane::Exception&) {
            ++failures;
        }
    }
    if (failures > 0)
        emit popup(2, QString("%1 properties could not be set automatically.").arg(failures));
}
