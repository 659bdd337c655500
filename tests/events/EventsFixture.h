#pragma once

// A camera manager over the stepped simulated camera, with the event thread running its loop, the
// records of the first camera built and listed as the window would, and a listener of the test's own
// in the window's place.

#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "events/CameraManagerListener.h"
#include "events/ZerlaneThread.h"
#include "support/ViewerTestSupport.h"
#include "worker/PostponedCalls.h"

#include <QStringList>
#include <QTest>

#include <functional>
#include <vector>

// Remembers what the camera manager reports.
class RecordingListener : public CameraManagerListener {
public:
    void registrationChanged(DeviceNodeBufferData* record) override { registrations.push_back(record); }
    void controlChanged(DeviceNodeBufferData* record) override { controls.push_back(record); }
    void propertySet(DeviceNodeBufferData* record) override { propertiesSet.push_back(record); }
    void configurationChanged(NodeData* node) override { configurations.push_back(node); }
    void showWarning(const QString& text) override { warnings << text; }

    std::vector<DeviceNodeBufferData*> registrations;
    std::vector<DeviceNodeBufferData*> controls;
    std::vector<DeviceNodeBufferData*> propertiesSet;
    std::vector<NodeData*> configurations;
    QStringList warnings;
};

class EventsFixture {
public:
    void start(bool runLoop = true)
    {
        ViewerTest::useSteppedSimulator();
        manager = CameraManager::instance();
        manager->setMainWindow(&listener);
        thread = ZerlaneThread::instance();
        if (runLoop) {
            thread->start();
            QVERIFY(ViewerTest::waitFor([this] { return thread->isLoopRunning(); }));
        }
        buildRecords();
    }

    // The records of the first camera, built and listed as the window does on discovery.
    void buildRecords()
    {
        if (!manager)
            manager = CameraManager::instance();
        const std::vector<Zerlane::Device> devices = manager->context().getDevices();
        QVERIFY(!devices.empty());
        device = devices.front();
        deviceRecord = addCamera(manager, device);
        for (NodeData* record : deviceRecord->nodes) {
            if (record->node.is<Zerlane::DepthNode>())
                depth = record;
            else if (record->node.is<Zerlane::ColorNode>())
                color = record;
            else if (record->node.is<Zerlane::AudioNode>())
                audio = record;
        }
    }

    // A device and its mirrored nodes, listed as the tree lists them (by listDevice and listNode).
    DeviceData* addCamera(CameraManager* manager, const Zerlane::Device& device)
    {
        DeviceData* record = manager->addDevice(device);
        listDevice(record);
        for (const Zerlane::Node& node : device.getNodes()) {
            if (NodeData* nodeRecord = manager->addNode(device, node))
                listNode(nodeRecord);
        }
        return record;
    }

    void stop()
    {
        if (thread) {
            thread->on_aboutToQuitApplication();
            ZerlaneThread::destroyInstance();
        }
        CameraManager::destroyInstance();
        PostponedCalls::destroyInstance();
        thread = nullptr;
        manager = nullptr;
        depth = color = audio = nullptr;
        deviceRecord = nullptr;
        listener = RecordingListener();
    }

    static void enable(NodeData* node, const char* property)
    {
        Zerlane::Property<bool>::setValue(Zerlane::Interface(node->node), property, true);
    }

    // How new records are listed: straight into the manager's rows unless a test has a tree model.
    std::function<void(DeviceData*)> listDevice = [this](DeviceData* record) { manager->appendDevice(record); };
    std::function<void(NodeData*)> listNode = [this](NodeData* record) { manager->appendNodeToDevice(record); };

    CameraManager* manager = nullptr;
    ZerlaneThread* thread = nullptr;
    RecordingListener listener;
    Zerlane::Device device;
    DeviceData* deviceRecord = nullptr;
    NodeData* depth = nullptr;
    NodeData* color = nullptr;
    NodeData* audio = nullptr;
};
