#pragma once

// A camera manager over the stepped simulated camera, with the event thread running its loop, and
// the records of the first camera built as the main window would build them.

#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "support/ViewerTestSupport.h"
#include "worker/PostponedCalls.h"

#include <QTest>

class EventsFixture {
public:
    void start(bool runLoop = true)
    {
        ViewerTest::useSteppedSimulator();
        manager = CameraManager::instance();
        thread = ZerlaneThread::instance();
        if (runLoop) {
            thread->start();
            QVERIFY(ViewerTest::waitFor([this] { return thread->isLoopRunning(); }));
        }
        buildRecords();
    }

    // The records of the first camera, as the main window builds them on discovery.
    void buildRecords()
    {
        if (!manager)
            manager = CameraManager::instance();
        const std::vector<Zerlane::Device> devices = manager->context().getDevices();
        QVERIFY(!devices.empty());
        device = devices.front();
        deviceRecord = manager->addDevice(device);
        for (const Zerlane::Node& node : device.getNodes()) {
            NodeData* record = manager->addNode(device, node);
            if (node.is<Zerlane::DepthNode>())
                depth = record;
            else if (node.is<Zerlane::ColorNode>())
                color = record;
            else if (node.is<Zerlane::AudioNode>())
                audio = record;
        }
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
    }

    BufferData* buffer(NodeData* node, uint32_t type) const
    {
        for (BufferData* b : node->buffers) {
            if (b->type == type)
                return b;
        }
        return nullptr;
    }

    static void enable(NodeData* node, const char* property)
    {
        Zerlane::Property<bool>::setValue(Zerlane::Interface(node->node), property, true);
    }

    CameraManager* manager = nullptr;
    ZerlaneThread* thread = nullptr;
    Zerlane::Device device;
    DeviceData* deviceRecord = nullptr;
    NodeData* depth = nullptr;
    NodeData* color = nullptr;
    NodeData* audio = nullptr;
};
