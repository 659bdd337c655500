#include "worker/Settings.h"

#include "app/shared/ViewerLog.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/DisplayPreferences.h"

#include <Zerlane/AudioNode.h>
#include <Zerlane/ColorNode.h>
#include <Zerlane/DepthNode.h>
#include <Zerlane/Exceptions.h>
#include <Zerlane/Interface.h>
#include <Zerlane/Utils/Format.h>

#include <QMetaType>
#include <QRecursiveMutex>
#include <QStringList>

#include <algorithm>
#include <variant>

namespace {

// The store is used from the GUI and the worker thread; one lock serialises every access.
QRecursiveMutex g_mutex;

// The defaults of the per-frame preferences are the cache's own.
const DisplayPreferences kDisplayDefaults;

// Running numbers of the workspace records, for the whole process.
int g_deviceCounter = 0;
int g_nodeCounter = 0;
int g_bufferCounter = 0;

struct PresetDefaults {
    float targetX, targetY, targetZ, targetDistance, pan, tilt;
};

constexpr PresetDefaults kPresetDefaults[Settings::PresetCount] = {
    {0.f, 0.f, 0.5f, 0.5f, 0.f, 0.f},    // Front
    {0.f, 0.f, 0.5f, 1.0f, 270.f, 0.f},  // Left
    {0.f, 0.f, 0.5f, 1.0f, 90.f, 0.f},   // Right
    {0.f, 0.f, 0.5f, 1.0f, 0.f, -90.f},  // Top
    {0.f, 0.f, 0.5f, 1.0f, 180.f, 90.f}, // Bottom
};

const PresetDefaults& presetDefaults(int preset)
{
    return kPresetDefaults[preset >= 0 && preset < Settings::PresetCount ? preset : 0];
}

QString presetKey(int preset, const char* name)
{
    return QStringLiteral("cameraView/%1/%2").arg(preset).arg(QLatin1String(name));
}

QString deviceKey(int device, const char* name)
{
    return QStringLiteral("workspace/devices/%1/%2").arg(device).arg(QLatin1String(name));
}

QString nodeKey(int node, const char* name)
{
    return QStringLiteral("workspace/nodes/%1/%2").arg(node).arg(QLatin1String(name));
}

QString nodePropertyKey(int node, const QString& property)
{
    return QStringLiteral("workspace/nodes/%1/properties/%2").arg(node).arg(property);
}

QString bufferKey(int buffer, const char* name)
{
    return QStringLiteral("workspace/buffers/%1/%2").arg(buffer).arg(QLatin1String(name));
}

bool isIntegerType(int typeId)
{
    return typeId == QMetaType::Int || typeId == QMetaType::UInt || typeId == QMetaType::LongLong ||
           typeId == QMetaType::ULongLong || typeId == QMetaType::Short || typeId == QMetaType::UShort;
}

bool isNumberType(int typeId)
{
    return isIntegerType(typeId) || typeId == QMetaType::Double || typeId == QMetaType::Float;
}

// The INI files behind QSettings reserve the section name "General" (in any case) for keys outside
// any group. The "general/..." keys are therefore written under "[%General]", which reads back in the
// next run as "General/...", and a hand-written "[general]" section holds top-level keys. Both
// spellings are what a "general/..." key is looked up under, after its own.
QStringList spellingsOf(const QString& key)
{
    static const QString group = QStringLiteral("general/");
    if (!key.startsWith(group))
        return {key};
    const QString name = key.mid(group.size());
    return {key, QStringLiteral("General/") + name, name};
}

QVariant storedValue(const QString& key)
{
    QMutexLocker locker(&g_mutex);
    for (const QString& spelling : spellingsOf(key)) {
        const QVariant value = Settings::store().value(spelling);
        if (value.isValid())
            return value;
    }
    return QVariant();
}

// The value of a workspace property, typed by the property's kind; an invalid variant for kinds that
// are not saved.
QVariant propertyValue(const Zerlane::PropertyBase& property, const Zerlane::Interface& iface)
{
    const Zerlane::PropertyValue value = property.getValue(iface, property.type());
    if (const bool* b = std::get_if<bool>(&value))
        return QVariant(*b);
    if (const int32_t* i = std::get_if<int32_t>(&value))
        return QVariant(int(*i));
    if (const float* f = std::get_if<float>(&value))
        return QVariant(*f);
    if (const std::string* s = std::get_if<std::string>(&value))
        return QVariant(QString::fromStdString(*s));
    return QVariant();
}

bool isSavedPropertyType(Zerlane::PropertyType type)
{
    return type == Zerlane::PropertyType::Bool || type == Zerlane::PropertyType::Int ||
           type == Zerlane::PropertyType::Float || type == Zerlane::PropertyType::String;
}

void writeNodeProperties(NodeData* node, int number)
{
    const Zerlane::Interface iface(node->node);
    for (const Zerlane::PropertyBase& property : node->properties) {
        try {
            if (property.isReadOnly() || !isSavedPropertyType(property.type()))
                continue;
            const QVariant value = propertyValue(property, iface);
            if (value.isValid())
                Settings::setValue(nodePropertyKey(number, QString::fromStdString(property.name())), value);
        } catch (const Zerlane::Exception& e) {
            ViewerLog::warning(Zerlane::Utils::Format("Could not store node property % in the workspace: %") %
                       property.name() % e.getMessage());
        }
    }
}

void writeNodeConfiguration(NodeData* node, int number)
{
    try {
        if (node->node.is<Zerlane::DepthNode>()) {
            const auto c = Zerlane::DepthNode(node->node).getConfiguration();
            Settings::setValue(nodeKey(number, "config/format"), int(c.frameFormat));
            Settings::setValue(nodeKey(number, "config/frameRate"), int(c.frameRate));
            Settings::setValue(nodeKey(number, "config/mode"), int(c.mode));
            Settings::setValue(nodeKey(number, "config/saturation"), c.saturation);
        } else if (node->node.is<Zerlane::ColorNode>()) {
            const auto c = Zerlane::ColorNode(node->node).getConfiguration();
            Settings::setValue(nodeKey(number, "config/format"), int(c.frameFormat));
            Settings::setValue(nodeKey(number, "config/frameRate"), int(c.frameRate));
            Settings::setValue(nodeKey(number, "config/compression"), int(c.compression));
            Settings::setValue(nodeKey(number, "config/powerLineFrequency"), int(c.powerLineFrequency));
        } else if (node->node.is<Zerlane::AudioNode>()) {
            const auto c = Zerlane::AudioNode(node->node).getConfiguration();
            Settings::setValue(nodeKey(number, "config/samplingRate"), int(c.audioFormat.sampleRate));
            Settings::setValue(nodeKey(number, "config/bps"), int(c.audioFormat.bitsPerSample));
            Settings::setValue(nodeKey(number, "config/nbChannels"), int(c.audioFormat.nbChannels));
        }
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Zerlane::Utils::Format("Could not store node configuration in the workspace: %") % e.getMessage());
    }
}

QString nodeTypeName(NodeData* node)
{
    try {
        return QString::fromStdString(node->node.getType().name());
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Zerlane::Utils::Format("Could not get node type for the workspace: %") % e.getMessage());
        return QString();
    }
}

} // namespace

QSettings& Settings::store()
{
    // Made on first use, so that tests can point QSettings at a temporary directory first.
    static QSettings settings(QStringLiteral("Hallmere"), QStringLiteral("ZerlaneViewer"));
    return settings;
}

// ---- typed access ---------------------------------------------------------------------------------

bool Settings::boolValue(const QString& key, bool defaultValue)
{
    const QVariant v = storedValue(key);
    if (v.typeId() == QMetaType::Bool)
        return v.toBool();
    if (v.typeId() == QMetaType::QString) {
        const QString text = v.toString().trimmed().toLower();
        if (text == QLatin1String("true"))
            return true;
        if (text == QLatin1String("false"))
            return false;
    }
    return defaultValue;
}

int Settings::intValue(const QString& key, int defaultValue)
{
    const QVariant v = storedValue(key);
    bool ok = false;
    int result = 0;
    if (isIntegerType(v.typeId()))
        result = v.toInt(&ok);
    else if (v.typeId() == QMetaType::QString)
        result = v.toString().trimmed().toInt(&ok);
    return ok ? result : defaultValue;
}

quint32 Settings::uintValue(const QString& key, quint32 defaultValue)
{
    const QVariant v = storedValue(key);
    bool ok = false;
    quint32 result = 0;
    if (isIntegerType(v.typeId()))
        result = v.toUInt(&ok);
    else if (v.typeId() == QMetaType::QString)
        result = v.toString().trimmed().toUInt(&ok);
    return ok ? result : defaultValue;
}

float Settings::floatValue(const QString& key, float defaultValue)
{
    const QVariant v = storedValue(key);
    bool ok = false;
    float result = 0.f;
    if (isNumberType(v.typeId()))
        result = v.toFloat(&ok);
    else if (v.typeId() == QMetaType::QString)
        result = v.toString().trimmed().toFloat(&ok);
    return ok ? result : defaultValue;
}

QString Settings::stringValue(const QString& key, const QString& defaultValue)
{
    const QVariant v = storedValue(key);
    if (v.typeId() == QMetaType::QString || v.typeId() == QMetaType::QByteArray || isNumberType(v.typeId()))
        return v.toString();
    return defaultValue;
}

QPoint Settings::pointValue(const QString& key, const QPoint& defaultValue)
{
    const QVariant v = storedValue(key);
    return v.typeId() == QMetaType::QPoint ? v.toPoint() : defaultValue;
}

QSize Settings::sizeValue(const QString& key, const QSize& defaultValue)
{
    const QVariant v = storedValue(key);
    return v.typeId() == QMetaType::QSize ? v.toSize() : defaultValue;
}

void Settings::setValue(const QString& key, const QVariant& value)
{
    QMutexLocker locker(&g_mutex);
    // An older spelling of the key would land in the same file section as the new value.
    for (const QString& spelling : spellingsOf(key).mid(1))
        store().remove(spelling);
    store().setValue(key, value);
}

void Settings::sync()
{
    QMutexLocker locker(&g_mutex);
    store().sync();
}

// ---- preferences ----------------------------------------------------------------------------------

bool Settings::autoSaveWorkspace() { return boolValue(QStringLiteral("general/autoSaveWorkspace"), false); }
void Settings::setAutoSaveWorkspace(bool on) { setValue(QStringLiteral("general/autoSaveWorkspace"), on); }
bool Settings::autoExpandDevices() { return boolValue(QStringLiteral("general/autoExpandDevices"), true); }
void Settings::setAutoExpandDevices(bool on) { setValue(QStringLiteral("general/autoExpandDevices"), on); }
bool Settings::autoExpandNodes() { return boolValue(QStringLiteral("general/autoExpandNodes"), true); }
void Settings::setAutoExpandNodes(bool on) { setValue(QStringLiteral("general/autoExpandNodes"), on); }
int Settings::sdNumFrames() { return intValue(QStringLiteral("view2d/sdNumFrames"), kDisplayDefaults.sdNumFrames); }
void Settings::setSdNumFrames(int frames) { setValue(QStringLiteral("view2d/sdNumFrames"), frames); }
quint32 Settings::roiColor() { return uintValue(QStringLiteral("view2d/roiColor"), kDisplayDefaults.roiColor); }
void Settings::setRoiColor(quint32 rgb) { setValue(QStringLiteral("view2d/roiColor"), rgb); }
int Settings::dotSize() { return intValue(QStringLiteral("view3d/dotSize"), kDisplayDefaults.dotSize); }
void Settings::setDotSize(int size) { setValue(QStringLiteral("view3d/dotSize"), size); }
bool Settings::displayTriangles() { return boolValue(QStringLiteral("view3d/displayTriangles"), kDisplayDefaults.displayTriangles); }
void Settings::setDisplayTriangles(bool on) { setValue(QStringLiteral("view3d/displayTriangles"), on); }
bool Settings::displayAxis() { return boolValue(QStringLiteral("view3d/displayAxis"), kDisplayDefaults.displayAxis); }
void Settings::setDisplayAxis(bool on) { setValue(QStringLiteral("view3d/displayAxis"), on); }
bool Settings::displayAxisLabels() { return boolValue(QStringLiteral("view3d/displayAxisLabels"), kDisplayDefaults.displayAxisLabels); }
void Settings::setDisplayAxisLabels(bool on) { setValue(QStringLiteral("view3d/displayAxisLabels"), on); }
quint32 Settings::nonMappedUvPixelsColor()
{
    return uintValue(QStringLiteral("view3d/nonMappedUvPixelsColor"), kDisplayDefaults.nonMappedUvPixelsColor);
}
void Settings::setNonMappedUvPixelsColor(quint32 rgb) { setValue(QStringLiteral("view3d/nonMappedUvPixelsColor"), rgb); }
quint32 Settings::backgroundColor() { return uintValue(QStringLiteral("view3d/backgroundColor"), kDisplayDefaults.backgroundColor); }
void Settings::setBackgroundColor(quint32 rgb) { setValue(QStringLiteral("view3d/backgroundColor"), rgb); }

DisplayPreferences Settings::displayPreferences()
{
    DisplayPreferences preferences;
    preferences.sdNumFrames = sdNumFrames();
    preferences.roiColor = roiColor();
    preferences.dotSize = dotSize();
    preferences.displayTriangles = displayTriangles();
    preferences.displayAxis = displayAxis();
    preferences.displayAxisLabels = displayAxisLabels();
    preferences.nonMappedUvPixelsColor = nonMappedUvPixelsColor();
    preferences.backgroundColor = backgroundColor();
    return preferences;
}

// ---- camera presets -------------------------------------------------------------------------------

float Settings::cameraTargetX(int preset) { return floatValue(presetKey(preset, "targetX"), presetDefaults(preset).targetX); }
void Settings::setCameraTargetX(int preset, float value) { setValue(presetKey(preset, "targetX"), value); }
float Settings::cameraTargetY(int preset) { return floatValue(presetKey(preset, "targetY"), presetDefaults(preset).targetY); }
void Settings::setCameraTargetY(int preset, float value) { setValue(presetKey(preset, "targetY"), value); }
float Settings::cameraTargetZ(int preset) { return floatValue(presetKey(preset, "targetZ"), presetDefaults(preset).targetZ); }
void Settings::setCameraTargetZ(int preset, float value) { setValue(presetKey(preset, "targetZ"), value); }
float Settings::cameraTargetDistance(int preset)
{
    return floatValue(presetKey(preset, "targetDistance"), presetDefaults(preset).targetDistance);
}
void Settings::setCameraTargetDistance(int preset, float value) { setValue(presetKey(preset, "targetDistance"), value); }
float Settings::cameraPan(int preset) { return floatValue(presetKey(preset, "pan"), presetDefaults(preset).pan); }
void Settings::setCameraPan(int preset, float value) { setValue(presetKey(preset, "pan"), value); }
float Settings::cameraTilt(int preset) { return floatValue(presetKey(preset, "tilt"), presetDefaults(preset).tilt); }
void Settings::setCameraTilt(int preset, float value) { setValue(presetKey(preset, "tilt"), value); }

// ---- workspace: window ----------------------------------------------------------------------------

QPoint Settings::workspacePos() { return pointValue(QStringLiteral("workspace/pos"), QPoint(0, 0)); }
void Settings::setWorkspacePos(const QPoint& pos) { setValue(QStringLiteral("workspace/pos"), pos); }
QSize Settings::workspaceSize() { return sizeValue(QStringLiteral("workspace/size"), QSize(-1, -1)); }
void Settings::setWorkspaceSize(const QSize& size) { setValue(QStringLiteral("workspace/size"), size); }
bool Settings::workspaceIsMaximized() { return boolValue(QStringLiteral("workspace/isMaximized"), false); }
void Settings::setWorkspaceIsMaximized(bool on) { setValue(QStringLiteral("workspace/isMaximized"), on); }

// ---- workspace: writers ---------------------------------------------------------------------------

void Settings::clearWorkspace()
{
    QMutexLocker locker(&g_mutex);
    store().beginGroup(QStringLiteral("workspace"));
    store().remove(QString());
    store().endGroup();
}

int Settings::writeDevice(DeviceData* device)
{
    QMutexLocker locker(&g_mutex);
    QString serial;
    try {
        serial = QString::fromStdString(device->device.getSerialNumber());
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Zerlane::Utils::Format("Could not get store device serial number: %") % e.getMessage());
        return g_deviceCounter - 1;
    }
    setValue(deviceKey(g_deviceCounter, "serial"), serial);
    setValue(deviceKey(g_deviceCounter, "controlled"), device->controlled.load());
    ++g_deviceCounter;
    setValue(QStringLiteral("workspace/devices/size"), g_deviceCounter);
    return g_deviceCounter - 1;
}

int Settings::writeNode(NodeData* node, int deviceNumber)
{
    QMutexLocker locker(&g_mutex);
    const int number = g_nodeCounter;
    setValue(nodeKey(number, "device"), deviceNumber);
    setValue(nodeKey(number, "type"), nodeTypeName(node));
    setValue(nodeKey(number, "registered"), node->registered);
    setValue(nodeKey(number, "controlled"), node->controlled);
    writeNodeProperties(node, number);
    writeNodeConfiguration(node, number);
    ++g_nodeCounter;
    setValue(QStringLiteral("workspace/nodes/size"), g_nodeCounter);
    return g_nodeCounter - 1;
}

int Settings::writeBuffer(BufferData* buffer, int nodeNumber, const QPoint& position, const QSize& size,
                          bool maximized, float x, float y, float z, float distance, float pan, float tilt)
{
    QMutexLocker locker(&g_mutex);
    const int number = g_bufferCounter;
    setValue(bufferKey(number, "node"), nodeNumber);
    setValue(bufferKey(number, "type"), int(buffer->type));
    setValue(bufferKey(number, "position"), position);
    setValue(bufferKey(number, "size"), size);
    setValue(bufferKey(number, "isMaximized"), maximized);
    setValue(bufferKey(number, "camera/x"), x);
    setValue(bufferKey(number, "camera/y"), y);
    setValue(bufferKey(number, "camera/z"), z);
    setValue(bufferKey(number, "camera/distance"), distance);
    setValue(bufferKey(number, "camera/pan"), pan);
    setValue(bufferKey(number, "camera/tilt"), tilt);
    ++g_bufferCounter;
    setValue(QStringLiteral("workspace/buffers/size"), g_bufferCounter);
    return g_bufferCounter - 1;
}

// ---- workspace: readers ---------------------------------------------------------------------------

int Settings::workspaceDeviceCount() { return intValue(QStringLiteral("workspace/devices/size"), 0); }
int Settings::workspaceNodeCount() { return intValue(QStringLiteral("workspace/nodes/size"), 0); }
int Settings::workspaceBufferCount() { return intValue(QStringLiteral("workspace/buffers/size"), 0); }
namespace {

std::vector<int> recordNumbers(const QString& group, int size)
{
    QMutexLocker locker(&g_mutex);
    Settings::store().beginGroup(group);
    const QStringList children = Settings::store().childGroups();
    Settings::store().endGroup();
    std::vector<int> numbers;
    for (const QString& child : children) {
        bool ok = false;
        const int number = child.toInt(&ok);
        if (ok && number >= 0 && number < size)
            numbers.push_back(number);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

} // namespace

std::vector<int> Settings::workspaceNodeNumbers()
{
    return recordNumbers(QStringLiteral("workspace/nodes"), workspaceNodeCount());
}

std::vector<int> Settings::workspaceBufferNumbers()
{
    return recordNumbers(QStringLiteral("workspace/buffers"), workspaceBufferCount());
}

QString Settings::workspaceDeviceSerial(int device) { return stringValue(deviceKey(device, "serial")); }
bool Settings::workspaceDeviceControlled(int device) { return boolValue(deviceKey(device, "controlled"), false); }
int Settings::workspaceNodeDevice(int node) { return intValue(nodeKey(node, "device"), -1); }
QString Settings::workspaceNodeType(int node) { return stringValue(nodeKey(node, "type")); }
bool Settings::workspaceNodeRegistered(int node) { return boolValue(nodeKey(node, "registered"), false); }
bool Settings::workspaceNodeControlled(int node) { return boolValue(nodeKey(node, "controlled"), false); }

QVariant Settings::workspaceNodeProperty(int node, const QString& name)
{
    return storedValue(nodePropertyKey(node, name));
}

Zerlane::DepthNodeConfiguration Settings::workspaceDepthConfiguration(int node)
{
    Zerlane::DepthNodeConfiguration c;
    c.frameFormat = Zerlane::FrameFormat(intValue(nodeKey(node, "config/format"), 0));
    c.frameRate = intValue(nodeKey(node, "config/frameRate"), 0);
    c.mode = Zerlane::CameraMode(intValue(nodeKey(node, "config/mode"), 0));
    c.saturation = boolValue(nodeKey(node, "config/saturation"), false);
    return c;
}

Zerlane::ColorNodeConfiguration Settings::workspaceColorConfiguration(int node)
{
    Zerlane::ColorNodeConfiguration c;
    c.frameFormat = Zerlane::FrameFormat(intValue(nodeKey(node, "config/format"), 0));
    c.frameRate = intValue(nodeKey(node, "config/frameRate"), 0);
    c.compression = Zerlane::CompressionType(intValue(nodeKey(node, "config/compression"), 0));
    c.powerLineFrequency = Zerlane::PowerLineFrequency(intValue(nodeKey(node, "config/powerLineFrequency"), 0));
    return c;
}

Zerlane::AudioNodeConfiguration Settings::workspaceAudioConfiguration(int node)
{
    Zerlane::AudioNodeConfiguration c;
    c.audioFormat.sampleRate = intValue(nodeKey(node, "config/samplingRate"), 0);
    c.audioFormat.bitsPerSample = intValue(nodeKey(node, "config/bps"), 0);
    c.audioFormat.nbChannels = intValue(nodeKey(node, "config/nbChannels"), 0);
    return c;
}

int Settings::workspaceBufferNode(int buffer) { return intValue(bufferKey(buffer, "node"), -1); }
int Settings::workspaceBufferType(int buffer) { return intValue(bufferKey(buffer, "type"), -1); }
QPoint Settings::workspaceBufferPosition(int buffer) { return pointValue(bufferKey(buffer, "position"), QPoint(0, 0)); }
QSize Settings::workspaceBufferSize(int buffer) { return sizeValue(bufferKey(buffer, "size"), QSize(-1, -1)); }
bool Settings::workspaceBufferIsMaximized(int buffer) { return boolValue(bufferKey(buffer, "isMaximized"), false); }
float Settings::workspaceBufferCameraX(int buffer) { return floatValue(bufferKey(buffer, "camera/x"), 0.f); }
float Settings::workspaceBufferCameraY(int buffer) { return floatValue(bufferKey(buffer, "camera/y"), 0.f); }
float Settings::workspaceBufferCameraZ(int buffer) { return floatValue(bufferKey(buffer, "camera/z"), 0.f); }
float Settings::workspaceBufferCameraDistance(int buffer) { return floatValue(bufferKey(buffer, "camera/distance"), 0.f); }
float Settings::workspaceBufferCameraPan(int buffer) { return floatValue(bufferKey(buffer, "camera/pan"), 0.f); }
float Settings::workspaceBufferCameraTilt(int buffer) { return floatValue(bufferKey(buffer, "camera/tilt"), 0.f); }
