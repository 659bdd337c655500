#pragma once

#include <QPoint>
#include <QSettings>
#include <QSize>
#include <QString>
#include <QVariant>

#include <vector>

#include <Zerlane/Configurations.h>

struct DisplayPreferences;
class BufferData;
class DeviceData;
class NodeData;

// Every persistent setting of the program: the preferences, the five camera presets of the 3D view
// and the workspace. All of them live in one QSettings store (organisation "Hallmere", application
// "ZerlaneViewer"). Getters return the key's default when the key is missing or holds a value of
// another type. Usable from the GUI and the worker thread.
class Settings {
public:
    static QSettings& store();

    // Preferences.
    static bool autoSaveWorkspace();
    static void setAutoSaveWorkspace(bool on);
    static bool autoExpandDevices();
    static void setAutoExpandDevices(bool on);
    static bool autoExpandNodes();
    static void setAutoExpandNodes(bool on);
    static int sdNumFrames();
    static void setSdNumFrames(int frames);
    static quint32 roiColor(); // 0xRRGGBB
    static void setRoiColor(quint32 rgb);
    static int dotSize();
    static void setDotSize(int size);
    static bool displayTriangles();
    static void setDisplayTriangles(bool on);
    static bool displayAxis();
    static void setDisplayAxis(bool on);
    static bool displayAxisLabels();
    static void setDisplayAxisLabels(bool on);
    static quint32 nonMappedUvPixelsColor();
    static void setNonMappedUvPixelsColor(quint32 rgb);
    static quint32 backgroundColor();
    static void setBackgroundColor(quint32 rgb);
    // The preferences used for every sample and paint, read in one go for the camera manager's copy.
    static DisplayPreferences displayPreferences();

    // Camera presets of the 3D view: 0 Front, 1 Left, 2 Right, 3 Top, 4 Bottom.
    enum Preset { Front = 0, Left, Right, Top, Bottom, PresetCount };
    static float cameraTargetX(int preset);
    static void setCameraTargetX(int preset, float value);
    static float cameraTargetY(int preset);
    static void setCameraTargetY(int preset, float value);
    static float cameraTargetZ(int preset);
    static void setCameraTargetZ(int preset, float value);
    static float cameraTargetDistance(int preset);
    static void setCameraTargetDistance(int preset, float value);
    static float cameraPan(int preset);
    static void setCameraPan(int preset, float value);
    static float cameraTilt(int preset);
    static void setCameraTilt(int preset, float value);

    // Workspace: main window geometry.
    static QPoint workspacePos();
    static void setWorkspacePos(const QPoint& pos);
    static QSize workspaceSize();
    static void setWorkspaceSize(const QSize& size);
    static bool workspaceIsMaximized();
    static void setWorkspaceIsMaximized(bool on);

    // Workspace writers. Records are numbered by counters that run for the whole process (clearing
    // the workspace does not reset them). Each returns the number the record was written under.
    static void clearWorkspace();
    // A device whose serial number cannot be read is not written (warning on the library log); the
    // number returned is then the previous device's (or -1), so its nodes are filed under that one.
    static int writeDevice(DeviceData* device);
    // The node's writable bool/int/float/string properties and its current configuration are read
    // from the camera.
    static int writeNode(NodeData* node, int deviceNumber);
    static int writeBuffer(BufferData* buffer, int nodeNumber, const QPoint& position, const QSize& size,
                           bool maximized, float x, float y, float z, float distance, float pan, float tilt);

    // Workspace readers, for the restore.
    static int workspaceDeviceCount();
    static int workspaceNodeCount();
    static int workspaceBufferCount();
    // The numbers of the node or buffer records the store really holds below its size key, in
    // increasing order: a size key larger than the file costs nothing.
    static std::vector<int> workspaceNodeNumbers();
    static std::vector<int> workspaceBufferNumbers();
    static QString workspaceDeviceSerial(int device);
    static bool workspaceDeviceControlled(int device);
    static int workspaceNodeDevice(int node);
    static QString workspaceNodeType(int node);
    static bool workspaceNodeRegistered(int node);
    static bool workspaceNodeControlled(int node);
    // The saved value of a node property; an invalid QVariant when none was saved.
    static QVariant workspaceNodeProperty(int node, const QString& name);
    static Zerlane::DepthNodeConfiguration workspaceDepthConfiguration(int node);
    static Zerlane::ColorNodeConfiguration workspaceColorConfiguration(int node);
    static Zerlane::AudioNodeConfiguration workspaceAudioConfiguration(int node);
    static int workspaceBufferNode(int buffer);
    static int workspaceBufferType(int buffer);
    static QPoint workspaceBufferPosition(int buffer);
    static QSize workspaceBufferSize(int buffer);
    static bool workspaceBufferIsMaximized(int buffer);
    static float workspaceBufferCameraX(int buffer);
    static float workspaceBufferCameraY(int buffer);
    static float workspaceBufferCameraZ(int buffer);
    static float workspaceBufferCameraDistance(int buffer);
    static float workspaceBufferCameraPan(int buffer);
    static float workspaceBufferCameraTilt(int buffer);

    // Typed reads of any key, with the default for a missing or wrongly typed value.
    static bool boolValue(const QString& key, bool defaultValue);
    static int intValue(const QString& key, int defaultValue);
    static quint32 uintValue(const QString& key, quint32 defaultValue);
    static float floatValue(const QString& key, float defaultValue);
    static QString stringValue(const QString& key, const QString& defaultValue = QString());
    static QPoint pointValue(const QString& key, const QPoint& defaultValue);
    static QSize sizeValue(const QString& key, const QSize& defaultValue);
    static void setValue(const QString& key, const QVariant& value);
    // Writes what was changed to the disk now, rather than when the store is destroyed at exit.
    static void sync();
};
