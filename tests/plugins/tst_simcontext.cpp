// The simulated ToF camera as an application sees it: through a standalone context of the library.
#include "Zerlane/Zerlane.h"
#include "Zerlane/sim/SimulatorControl.h"
#include "../sdk/SdkTestSupport.h"

#include <QtTest>

#include <atomic>
#include <mutex>
#include <thread>

using namespace Zerlane;
using Zerlane::Sim::Control;

namespace {

DepthNode depthNodeOf(const Device& device)
{
    for (const Node& node : device.getNodes())
        if (node.is<DepthNode>())
            return node.as<DepthNode>();
    return {};
}

} // namespace

class TestSimContext : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        Control::reset();
        Control::setStepped(true);
    }
    void cleanup() { Control::reset(); }

    void theCameraAsListed()
    {
        Context context = Context::createStandalone();
        const auto devices = context.getDevices();
        QCOMPARE(int(devices.size()), 1);
        const Device device = devices.front();
        QCOMPARE(device.getSerialNumber(), std::string("ZS0001"));
        QCOMPARE(device.getModel(), Device::MODEL_ZT_SIM);
        QCOMPARE(device.getType().name(), std::string("ZT-Sim Device"));
        QVERIFY(device.getUsbBackendVersion() > 0 && device.getTofControllerVersion() > 0);
        QCOMPARE(int(device.getNodes().size()), 3);

        const DepthNode depth = depthNodeOf(device);
        QVERIFY(depth.isSet());
        QCOMPARE(depth.getType().name(), std::string("ZT-Sim Depth Node"));
        QCOMPARE(depth.getRange(), 7.5f);
        QCOMPARE(int(depth.getConfigurations().size()), 28);
        QCOMPARE(depth.getConfiguration().frameFormat, FRAME_FORMAT_VGA);
        // "_noFan" is hidden from the list but found by name.
        bool listed = false;
        for (const PropertyBase& p : depth.getType().getProperties())
            listed |= p.name() == "_noFan";
        QVERIFY(!listed);
        QVERIFY(depth.getType().getProperty("_noFan").isHidden());
        QVERIFY(depth.getType().getProperty("range").isReadOnly());
    }

    void samplesArriveOnTheRunThread()
    {
        Context context = Context::createStandalone();
        DepthNode depth = depthNodeOf(context.getDevices().front());
        // Delivery options need no control.
        Property<bool>::setValue(depth, "enableDepthMap", true);
        Property<bool>::setValue(depth, "enableVertices", true);

        std::mutex mutex;
        std::vector<DepthNode::NewSampleReceivedData> samples;
        std::vector<std::thread::id> threads;
        FunctionHandler<DepthNode, DepthNode::NewSampleReceivedData> handler(
            [&](DepthNode, DepthNode::NewSampleReceivedData sample) {
                std::lock_guard<std::mutex> lock(mutex);
                samples.push_back(sample);
                threads.push_back(std::this_thread::get_id());
            });
        depth.newSampleReceivedEvent().connect(&handler);
        context.registerNode(depth);
        context.startNodes();
        {
            SdkTestSupport::EventLoop running(context);
            for (int i = 0; i < 3; ++i) {
                Control::step(1);
                QTRY_COMPARE_WITH_TIMEOUT([&] { std::lock_guard<std::mutex> l(mutex); return int(samples.size()); }(),
                                          i + 1, 5000);
            }
            std::lock_guard<std::mutex> lock(mutex);
            for (std::thread::id id : threads)
                QCOMPARE(id, running.threadId());
        }
        context.stopNodes();
        depth.newSampleReceivedEvent().disconnect(&handler);

        const auto& s = samples.back();
        QCOMPARE(s.depthMap.size(), 640 * 480);
        QVERIFY(!s.uvMap.data());
        QVERIFY(s.timeOfArrival >= s.timeOfCapture);
        QVERIFY(samples[0].timeOfCapture < samples[1].timeOfCapture);
        int valid = 0;
        for (int i = 0; i < s.depthMap.size(); ++i) {
            if (s.depthMap[i] > 32000)
                continue;
            ++valid;
            if (s.vertices[i].z != s.depthMap[i])
                QFAIL("vertex z differs from depth");
        }
        QVERIFY(valid > 100000);
    }

    void modeChangeReportsTheRange()
    {
        Context context = Context::createStandalone();
        DepthNode depth = depthNodeOf(context.getDevices().front());
        std::mutex mutex;
        std::vector<std::string> changed;
        FunctionHandler<Node, PropertyChangedData> handler([&](Node, PropertyChangedData data) {
            std::lock_guard<std::mutex> lock(mutex);
            changed.push_back(data.property.name());
        });
        depth.propertyChangedEvent().connect(&handler);
        {
            SdkTestSupport::EventLoop running(context);
            context.requestControl(depth);
            DepthNode::Configuration close = depth.getConfiguration();
            close.mode = CAMERA_MODE_CLOSE_RANGE;
            depth.setConfiguration(close);
            QCOMPARE(depth.getRange(), 3.0f);
            QTRY_VERIFY_WITH_TIMEOUT([&] {
                std::lock_guard<std::mutex> l(mutex);
                return std::find(changed.begin(), changed.end(), "range") != changed.end();
            }(), 5000);

            DepthNode::Configuration bad = close;
            bad.frameRate = 61;
            QVERIFY_THROWS_EXCEPTION(ArgumentException, depth.setConfiguration(bad));
            QCOMPARE(depth.getConfiguration(), close);
        }
        depth.propertyChangedEvent().disconnect(&handler);
    }

    void plugAndControlThroughTheContext()
    {
        Context context = Context::createStandalone();
        std::mutex mutex;
        std::vector<std::string> added;
        std::vector<Device> removed; // a gone device still compares, but no longer answers
        FunctionHandler<Context, Context::DeviceAddedData> onAdded([&](Context, Context::DeviceAddedData d) {
            std::lock_guard<std::mutex> lock(mutex);
            added.push_back(d.device.getSerialNumber());
        });
        FunctionHandler<Context, Context::DeviceRemovedData> onRemoved([&](Context, Context::DeviceRemovedData d) {
            std::lock_guard<std::mutex> lock(mutex);
            removed.push_back(d.device);
        });
        context.deviceAddedEvent().connect(&onAdded);
        context.deviceRemovedEvent().connect(&onRemoved);
        {
            SdkTestSupport::EventLoop running(context);
            Control::addCamera("BENCH-2");
            QTRY_COMPARE_WITH_TIMEOUT([&] { std::lock_guard<std::mutex> l(mutex); return added; }(),
                                      std::vector<std::string>{"BENCH-2"}, 5000);
            QCOMPARE(int(context.getDevices().size()), 2);

            Control::setControlledByAnotherClient("BENCH-2", true);
            Device other;
            for (const Device& d : context.getDevices())
                if (d.getSerialNumber() == "BENCH-2")
                    other = d;
            QVERIFY_THROWS_EXCEPTION(TimeoutException, context.requestControl(other));

            Control::removeCamera("BENCH-2");
            QTRY_COMPARE_WITH_TIMEOUT([&] { std::lock_guard<std::mutex> l(mutex); return removed; }(),
                                      std::vector<Device>{other}, 5000);
            QVERIFY(!other.isConnected());
        }
        context.deviceAddedEvent().disconnect(&onAdded);
        context.deviceRemovedEvent().disconnect(&onRemoved);
    }
};

QTEST_GUILESS_MAIN(TestSimContext)
#include "tst_simcontext.moc"
