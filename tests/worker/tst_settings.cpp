// Settings: defaults, round trips, wrongly typed values, and the workspace writers.
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "worker/Settings.h"

#include <Zerlane/Zerlane.h>
#include <Zerlane/plugin/FaultInjector.h>

#include <QCoreApplication>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QFile>
#include <QtTest>

#include "support/LogRecorder.h"

#include <mutex>
#include <optional>

namespace {

// The library log, quiet while a test expects warnings.
struct LogCapture : ViewerTest::LogRecorder {
    LogCapture() : LogRecorder(true) {}
};

bool has(const QString& key)
{
    return Settings::store().contains(key);
}

QVariant stored(const QString& key)
{
    return Settings::store().value(key);
}

} // namespace

class TstSettings : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();

    void preferenceDefaults();
    void presetDefaults();
    void roundTripsUseTheirKeys();
    void valuesReadBackAsText();
    void generalKeysSurviveTheFile();
    void wronglyTypedValuesGiveDefaults();
    void workspaceWindow();
    void workspaceNumberingRunsOn();
    void workspaceOfASimulatedCamera();

private:
    QTemporaryDir m_dir;
};

void TstSettings::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QStandardPaths::setTestModeEnabled(true);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.path());
    QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope, m_dir.path());
    QCOMPARE(Settings::store().organizationName(), QStringLiteral("Hallmere"));
    QCOMPARE(Settings::store().applicationName(), QStringLiteral("ZerlaneViewer"));
    QVERIFY(Settings::store().fileName().startsWith(m_dir.path()));
}

void TstSettings::init()
{
    Settings::store().clear();
}

void TstSettings::preferenceDefaults()
{
    QCOMPARE(Settings::autoSaveWorkspace(), false);
    QCOMPARE(Settings::autoExpandDevices(), true);
    QCOMPARE(Settings::autoExpandNodes(), true);
    QCOMPARE(Settings::sdNumFrames(), 100);
    QCOMPARE(Settings::roiColor(), 0x3399FFu);
    QCOMPARE(Settings::dotSize(), 2);
    QCOMPARE(Settings::displayTriangles(), false);
    QCOMPARE(Settings::displayAxis(), true);
    QCOMPARE(Settings::displayAxisLabels(), false);
    QCOMPARE(Settings::nonMappedUvPixelsColor(), 0u);
    QCOMPARE(Settings::backgroundColor(), 0u);
    // Reading does not write.
    QVERIFY(Settings::store().allKeys().isEmpty());
}

void TstSettings::presetDefaults()
{
    const float expected[5][6] = {
        {0, 0, 0.5f, 0.5f, 0, 0},   {0, 0, 0.5f, 1.0f, 270, 0}, {0, 0, 0.5f, 1.0f, 90, 0},
        {0, 0, 0.5f, 1.0f, 0, -90}, {0, 0, 0.5f, 1.0f, 180, 90},
    };
    for (int p = 0; p < 5; ++p) {
        QCOMPARE(Settings::cameraTargetX(p), expected[p][0]);
        QCOMPARE(Settings::cameraTargetY(p), expected[p][1]);
        QCOMPARE(Settings::cameraTargetZ(p), expected[p][2]);
        QCOMPARE(Settings::cameraTargetDistance(p), expected[p][3]);
        QCOMPARE(Settings::cameraPan(p), expected[p][4]);
        QCOMPARE(Settings::cameraTilt(p), expected[p][5]);
    }
}

void TstSettings::roundTripsUseTheirKeys()
{
    Settings::setAutoSaveWorkspace(true);
    Settings::setAutoExpandDevices(false);
    Settings::setAutoExpandNodes(false);
    Settings::setSdNumFrames(25);
    Settings::setRoiColor(0xFFEE01);
    Settings::setDotSize(5);
    Settings::setDisplayTriangles(true);
    Settings::setDisplayAxis(false);
    Settings::setDisplayAxisLabels(true);
    Settings::setNonMappedUvPixelsColor(0x123456);
    Settings::setBackgroundColor(0xFFFFFF);
    Settings::setCameraPan(2, 45.5f);
    Settings::setCameraTilt(4, -10.f);
    Settings::setCameraTargetX(0, 1.f);
    Settings::setCameraTargetY(1, 2.f);
    Settings::setCameraTargetZ(3, 3.f);
    Settings::setCameraTargetDistance(3, 4.25f);

    QCOMPARE(Settings::autoSaveWorkspace(), true);
    QCOMPARE(Settings::autoExpandDevices(), false);
    QCOMPARE(Settings::autoExpandNodes(), false);
    QCOMPARE(Settings::sdNumFrames(), 25);
    QCOMPARE(Settings::roiColor(), 0xFFEE01u);
    QCOMPARE(Settings::dotSize(), 5);
    QCOMPARE(Settings::displayTriangles(), true);
    QCOMPARE(Settings::displayAxis(), false);
    QCOMPARE(Settings::displayAxisLabels(), true);
    QCOMPARE(Settings::nonMappedUvPixelsColor(), 0x123456u);
    QCOMPARE(Settings::backgroundColor(), 0xFFFFFFu);
    QCOMPARE(Settings::cameraPan(2), 45.5f);
    QCOMPARE(Settings::cameraPan(1), 270.f); // other presets keep theirs
    QCOMPARE(Settings::cameraTilt(4), -10.f);
    QCOMPARE(Settings::cameraTargetX(0), 1.f);
    QCOMPARE(Settings::cameraTargetY(1), 2.f);
    QCOMPARE(Settings::cameraTargetZ(3), 3.f);
    QCOMPARE(Settings::cameraTargetDistance(3), 4.25f);

    const QStringList keys = {
        "general/autoSaveWorkspace", "general/autoExpandDevices", "general/autoExpandNodes", "view2d/sdNumFrames",
        "view2d/roiColor", "view3d/dotSize", "view3d/displayTriangles", "view3d/displayAxis",
        "view3d/displayAxisLabels", "view3d/nonMappedUvPixelsColor", "view3d/backgroundColor", "cameraView/2/pan",
        "cameraView/4/tilt", "cameraView/0/targetX", "cameraView/1/targetY", "cameraView/3/targetZ",
        "cameraView/3/targetDistance",
    };
    QStringList all = Settings::store().allKeys();
    all.sort();
    QStringList sortedKeys = keys;
    sortedKeys.sort();
    QCOMPARE(all, sortedKeys);

    // The same values come back from the file on disk.
    Settings::store().sync();
    QSettings disk(Settings::store().fileName(), QSettings::IniFormat);
    QCOMPARE(disk.value("view3d/dotSize").toInt(), 5);
    QCOMPARE(disk.value("view2d/roiColor").toUInt(), 0xFFEE01u);
    QCOMPARE(disk.value("cameraView/2/pan").toFloat(), 45.5f);
}

void TstSettings::valuesReadBackAsText()
{
    // A store read from its file holds text; the getters still give typed values.
    Settings::setValue("general/autoExpandDevices", QStringLiteral("false"));
    Settings::setValue("view3d/displayTriangles", QStringLiteral("true"));
    Settings::setValue("view2d/sdNumFrames", QStringLiteral("42"));
    Settings::setValue("view2d/roiColor", QStringLiteral("16711680"));
    Settings::setValue("cameraView/1/pan", QStringLiteral("12.5"));
    QCOMPARE(Settings::autoExpandDevices(), false);
    QCOMPARE(Settings::displayTriangles(), true);
    QCOMPARE(Settings::sdNumFrames(), 42);
    QCOMPARE(Settings::roiColor(), 0xFF0000u);
    QCOMPARE(Settings::cameraPan(1), 12.5f);
}

void TstSettings::generalKeysSurviveTheFile()
{
    // The file format keeps "general" keys in its reserved section: what this program wrote reads back
    // as "General/...", and a section written by hand as "[general]" holds keys without a group.
    const QString path = Settings::store().fileName();
    for (const char* text : {"[%General]\nautoSaveWorkspace=true\nautoExpandNodes=false\n",
                             "[general]\nautoSaveWorkspace=true\nautoExpandNodes=false\n"}) {
        Settings::store().clear();
        Settings::store().sync();
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
        file.close();
        QSettings fresh(path, QSettings::IniFormat);
        QVERIFY(!fresh.contains("general/autoSaveWorkspace"));
        Settings::store().sync(); // read the file again, as a new run would
        QVERIFY2(Settings::autoSaveWorkspace(), text);
        QVERIFY(!Settings::autoExpandNodes());

        // Written again: one value, under the program's own key, in the next run too.
        Settings::setAutoSaveWorkspace(false);
        Settings::sync();
        QVERIFY(!Settings::autoSaveWorkspace());
        QVERIFY(!Settings::store().contains("General/autoSaveWorkspace"));
        QVERIFY(!Settings::store().contains("autoSaveWorkspace"));
    }
    Settings::store().clear();
}

void TstSettings::wronglyTypedValuesGiveDefaults()
{
    Settings::setValue("general/autoSaveWorkspace", QStringLiteral("banana"));
    Settings::setValue("general/autoExpandNodes", QPoint(1, 1));
    Settings::setValue("view2d/sdNumFrames", QStringLiteral("many"));
    Settings::setValue("view2d/roiColor", QStringLiteral("-5"));
    Settings::setValue("view3d/dotSize", 2.5);
    Settings::setValue("view3d/displayAxis", QSize(3, 3));
    Settings::setValue("view3d/backgroundColor", QStringList{"a", "b"});
    Settings::setValue("cameraView/1/pan", QStringLiteral("left"));
    Settings::setValue("cameraView/4/tilt", true);
    Settings::setValue("workspace/pos", QStringLiteral("10,10"));
    Settings::setValue("workspace/size", 640);
    Settings::setValue("workspace/isMaximized", 7);
    QCOMPARE(Settings::autoSaveWorkspace(), false);
    QCOMPARE(Settings::autoExpandNodes(), true);
    QCOMPARE(Settings::sdNumFrames(), 100);
    QCOMPARE(Settings::roiColor(), 0x3399FFu);
    QCOMPARE(Settings::dotSize(), 2);
    QCOMPARE(Settings::displayAxis(), true);
    QCOMPARE(Settings::backgroundColor(), 0u);
    QCOMPARE(Settings::cameraPan(1), 270.f);
    QCOMPARE(Settings::cameraTilt(4), 90.f);
    QCOMPARE(Settings::workspacePos(), QPoint(0, 0));
    QCOMPARE(Settings::workspaceSize(), QSize(-1, -1));
    QCOMPARE(Settings::workspaceIsMaximized(), false);
}

void TstSettings::workspaceWindow()
{
    QCOMPARE(Settings::workspacePos(), QPoint(0, 0));
    QVERIFY(!Settings::workspaceSize().isValid());
    QCOMPARE(Settings::workspaceSize(), QSize(-1, -1));
    Settings::setWorkspacePos(QPoint(-20, 30));
    Settings::setWorkspaceSize(QSize(800, 600));
    Settings::setWorkspaceIsMaximized(true);
    Settings::setAutoSaveWorkspace(true);
    QCOMPARE(Settings::workspacePos(), QPoint(-20, 30));
    QCOMPARE(Settings::workspaceSize(), QSize(800, 600));
    QCOMPARE(Settings::workspaceIsMaximized(), true);
    QCOMPARE(stored("workspace/pos").toPoint(), QPoint(-20, 30));

    // Clearing the workspace leaves the preferences alone.
    Settings::clearWorkspace();
    QVERIFY(!has("workspace/pos") && !has("workspace/size") && !has("workspace/isMaximized"));
    QCOMPARE(Settings::autoSaveWorkspace(), true);
}

void TstSettings::workspaceNumberingRunsOn()
{
    LogCapture log;
    // A device whose serial number cannot be read writes nothing and files its nodes under the
    // previous device; before any device that is -1.
    auto* lost = new DeviceData(Zerlane::Device(), {});
    QCOMPARE(Settings::writeDevice(lost), -1);
    QVERIFY(!has("workspace/devices/size"));
    QCOMPARE(log.warnings().size(), 1);
    QVERIFY(log.warnings().first().startsWith("Could not get store device serial number: "));

    auto* node = new NodeData(Zerlane::Node(), lost, {});
    node->registered = true;
    auto* buffer = new BufferData(node, BufferData::Confidence);
    node->buffers.push_back(buffer);

    for (int save = 0; save < 2; ++save) {
        Settings::clearWorkspace();
        const int nodeNumber = Settings::writeNode(node, -1);
        QCOMPARE(nodeNumber, save);
        QCOMPARE(Settings::workspaceNodeCount(), save + 1);
        QCOMPARE(Settings::workspaceNodeDevice(nodeNumber), -1);
        QCOMPARE(Settings::workspaceNodeRegistered(nodeNumber), true);
        QCOMPARE(Settings::workspaceNodeControlled(nodeNumber), false);

        for (int i = 0; i < 2; ++i) {
            const int number = Settings::writeBuffer(buffer, nodeNumber, QPoint(10, 20 + i), QSize(300, 200), i == 1,
                                                     1.f, 2.f, 3.f, 4.f, 5.f, 6.f);
            QCOMPARE(number, 2 * save + i);
        }
        QCOMPARE(Settings::workspaceBufferCount(), 2 * save + 2);
        const int last = 2 * save + 1;
        QCOMPARE(Settings::workspaceBufferNode(last), nodeNumber);
        QCOMPARE(Settings::workspaceBufferType(last), int(BufferData::Confidence));
        QCOMPARE(Settings::workspaceBufferPosition(last), QPoint(10, 21));
        QCOMPARE(Settings::workspaceBufferSize(last), QSize(300, 200));
        QCOMPARE(Settings::workspaceBufferIsMaximized(last), true);
        QCOMPARE(Settings::workspaceBufferCameraX(last), 1.f);
        QCOMPARE(Settings::workspaceBufferCameraY(last), 2.f);
        QCOMPARE(Settings::workspaceBufferCameraZ(last), 3.f);
        QCOMPARE(Settings::workspaceBufferCameraDistance(last), 4.f);
        QCOMPARE(Settings::workspaceBufferCameraPan(last), 5.f);
        QCOMPARE(Settings::workspaceBufferCameraTilt(last), 6.f);
        // The first save's records are gone after the second.
        if (save == 1) {
            QVERIFY(!has("workspace/nodes/0/device"));
            QVERIFY(!has("workspace/buffers/0/node"));
        }
    }
    node->release();
    lost->release();
}

void TstSettings::workspaceOfASimulatedCamera()
{
    Zerlane::Context context;
    try {
        context = Zerlane::Context::createStandalone();
    } catch (const Zerlane::Exception& e) {
        QSKIP(qPrintable(QStringLiteral("no simulated camera: %1").arg(QString::fromStdString(e.getMessage()))));
    }
    const std::vector<Zerlane::Device> devices = context.getDevices();
    if (devices.empty())
        QSKIP("no simulated camera plugged in");

    LogCapture log;
    const Zerlane::Device& device = devices.front();
    auto* record = new DeviceData(device, device.getType().getProperties());
    record->controlled = true;
    for (const Zerlane::Node& node : device.getNodes())
        record->nodes.push_back(new NodeData(node, record, node.getType().getProperties()));
    const QString serial = QString::fromStdString(device.getSerialNumber());

    int written = 0, readOnly = 0;
    for (int save = 0; save < 2; ++save) {
        Settings::clearWorkspace();
        const int deviceNumber = Settings::writeDevice(record);
        QCOMPARE(Settings::workspaceDeviceCount(), deviceNumber + 1);
        QCOMPARE(Settings::workspaceDeviceSerial(deviceNumber), serial);
        QCOMPARE(Settings::workspaceDeviceControlled(deviceNumber), true);
        if (save == 1)
            QVERIFY(!has(QStringLiteral("workspace/devices/%1/serial").arg(deviceNumber - 1)));

        for (NodeData* node : record->nodes) {
            const int n = Settings::writeNode(node, deviceNumber);
            QCOMPARE(Settings::workspaceNodeDevice(n), deviceNumber);
            QCOMPARE(Settings::workspaceNodeType(n), QString::fromStdString(node->node.getType().name()));
            const Zerlane::Interface iface(node->node);
            for (const Zerlane::PropertyBase& property : node->properties) {
                const QString key =
                    QStringLiteral("workspace/nodes/%1/properties/%2").arg(n).arg(QString::fromStdString(property.name()));
                if (property.isReadOnly()) {
                    QVERIFY2(!has(key), qPrintable(key));
                    ++readOnly;
                    continue;
                }
                written += has(key);
                const Zerlane::PropertyValue value = property.getValue(iface, property.type());
                if (const bool* b = std::get_if<bool>(&value))
                    QCOMPARE(stored(key), QVariant(*b));
                else if (const int32_t* i = std::get_if<int32_t>(&value))
                    QCOMPARE(stored(key), QVariant(int(*i)));
                else if (const float* f = std::get_if<float>(&value))
                    QCOMPARE(stored(key), QVariant(*f));
                else if (const std::string* s = std::get_if<std::string>(&value))
                    QCOMPARE(stored(key), QVariant(QString::fromStdString(*s)));
                else
                    QVERIFY2(!has(key), qPrintable(key));
            }
            if (node->node.is<Zerlane::DepthNode>())
                QVERIFY(Settings::workspaceDepthConfiguration(n) == Zerlane::DepthNode(node->node).getConfiguration());
            else if (node->node.is<Zerlane::ColorNode>())
                QVERIFY(Settings::workspaceColorConfiguration(n) == Zerlane::ColorNode(node->node).getConfiguration());
            else if (node->node.is<Zerlane::AudioNode>())
                QVERIFY(Settings::workspaceAudioConfiguration(n) == Zerlane::AudioNode(node->node).getConfiguration());
        }
    }
    QVERIFY(written > 0);
    QVERIFY(readOnly > 0); // "range" at least
    QCOMPARE(log.warnings(), QStringList());

    // The serial number cannot be read: nothing written, the previous number comes back.
    const int previous = Settings::workspaceDeviceCount() - 1;
    Zerlane::plugin::FaultInjector::inject("Device::getSerialNumber", Zerlane::plugin::FaultInjector::Kind::Transport,
                                           "link down", 1);
    QCOMPARE(Settings::writeDevice(record), previous);
    QCOMPARE(Settings::workspaceDeviceCount(), previous + 1);
    QCOMPARE(log.warnings(), QStringList{QStringLiteral("Could not get store device serial number: link down")});
    Zerlane::plugin::FaultInjector::clear();

    for (NodeData* node : record->nodes)
        node->release();
    record->release();
}

QTEST_GUILESS_MAIN(TstSettings)
#include "tst_settings.moc"
