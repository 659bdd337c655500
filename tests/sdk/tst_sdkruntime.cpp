// The standalone runtime of the camera library, driven through the simulated camera.

#include "Zerlane/Zerlane.h"
#include "Zerlane/plugin/FaultInjector.h"
#include "Zerlane/sim/SimulatorControl.h"

#include "SdkTestSupport.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <mutex>
#include <set>
#include <thread>

using namespace Zerlane;
using namespace SdkTestSupport;
using Zerlane::plugin::FaultInjector;
using Zerlane::Sim::Control;

namespace {

bool hasProperty(const std::vector<PropertyBase>& properties, const std::string& name)
{
    return std::any_of(properties.begin(), properties.end(), [&](const PropertyBase& p) { return p.name() == name; });
}

} // namespace

class TestSdkRuntime : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void handlesKeepTheirIdentity();
    void propertiesAreTypedAndGuarded();
    void configurationsNeedControl();
    void eventsRunOnTheRunThread();
    void quitBeforeAndDuringRun();
    void queueHoldsTwoSamplesAndCountsDrops();
    void hotPlugAndGoneHandles();
    void controlIsExclusive();
    void injectedFailures();
    void transportFailureEndsRun();
    void clockedStreamingAndTeardown();
};

void TestSdkRuntime::initTestCase()
{
    Utils::HMLogger* logger = Utils::HMLogger::instance();
    logger->setEchoToStderr(false);
    logger->release();
}

void TestSdkRuntime::init()
{
    Control::reset();
    QCOMPARE(Control::cameras(), std::vector<std::string> {"ZS0001"});
}

void TestSdkRuntime::cleanup()
{
    Control::reset();
}

void TestSdkRuntime::handlesKeepTheirIdentity()
{
    Context context = Context::createStandalone();
    const std::vector<Device> devices = context.getDevices();
    QCOMPARE(devices.size(), std::size_t(1));
    QVERIFY(context.getDevices() == devices);
    const Device device = devices[0];
    QCOMPARE(device.getSerialNumber(), std::string("ZS0001"));
    QCOMPARE(device.getModel(), Device::MODEL_ZT_SIM);

    const std::vector<Node> nodes = device.getNodes();
    QCOMPARE(nodes.size(), std::size_t(3));
    QVERIFY(device.getNodes() == nodes);
    const std::set<Node> ordered(nodes.begin(), nodes.end());
    QCOMPARE(ordered.size(), std::size_t(3));
    for (const Node& a : nodes)
        for (const Node& b : nodes)
            QCOMPARE((a < b) + (b < a) + (a == b), 1);

    const DepthNode depth = nodeOf<DepthNode>(device);
    QVERIFY(depth.isSet());
    QVERIFY(depth == nodes[0] || depth == nodes[1] || depth == nodes[2]);
    QCOMPARE(depth.getDevice(), device);
    QVERIFY(!depth.is<ColorNode>());
    const Node plain = depth;
    QCOMPARE(plain.as<DepthNode>(), depth);
    QCOMPARE(messageOf<InvalidOperationException>([&] { plain.as<ColorNode>(); }),
             QString("depth node of device ZS0001 is a depth node, not a color node"));

    const Interface deviceInterface(device);
    QCOMPARE(deviceInterface, Interface(device));
    QVERIFY(deviceInterface != Interface(depth));
    QVERIFY(deviceInterface.is<Device>() && !deviceInterface.is<Node>());
    QCOMPARE(deviceInterface.as<Device>(), device);
    QCOMPARE(Interface(depth).as<Node>(), Node(depth));
    QVERIFY(messageOf<InvalidOperationException>([&] { Interface(depth).as<Device>(); }).contains("not a device"));

    // One type (and so one set of property handles) for all cameras of a kind.
    Control::addCamera("ZS0002");
    const std::vector<Device> two = context.getDevices();
    QCOMPARE(two.size(), std::size_t(2));
    QCOMPARE(two[0], device);
    QCOMPARE(two[1].getType(), device.getType());
    const DepthNode otherDepth = nodeOf<DepthNode>(two[1]);
    QCOMPARE(otherDepth.getType(), depth.getType());
    QVERIFY(otherDepth != depth);
    QCOMPARE(otherDepth.getType().getProperty("range"), depth.getType().getProperty("range"));

    const Type type = depth.getType();
    QCOMPARE(type.name(), std::string("ZT-Sim Depth Node"));
    QVERIFY(!hasProperty(type.getProperties(), "_noFan"));
    QVERIFY(hasProperty(type.getAllProperties(), "_noFan"));
    QCOMPARE(type.getAllProperties().size(), type.getProperties().size() + 1);
    QVERIFY(type.getProperty("_noFan").isSet() && type.getProperty("_noFan").isHidden());
    QVERIFY(!type.getProperty("noSuchThing").isSet());

    // Each context has handles of its own.
    Context other = Context::createStandalone();
    QVERIFY(other != context);
    QVERIFY(other.getDevices()[0] != device);
    QCOMPARE(other.getDevices()[0].getSerialNumber(), device.getSerialNumber());
    QVERIFY(messageOf<ArgumentException>([&] { other.registerNode(depth); }).contains("belongs to another context"));
}

void TestSdkRuntime::propertiesAreTypedAndGuarded()
{
    Context context = Context::createStandalone();
    const Device device = context.getDevices()[0];
    const DepthNode depth = nodeOf<DepthNode>(device);
    const ColorNode color = nodeOf<ColorNode>(device);
    const Interface iface(depth);

    QCOMPARE(Property<int32_t>::getValue(iface, "illuminationLevel"), 80);
    QCOMPARE(messageOf<ArgumentException>([&] { Property<bool>::getValue(iface, "foo"); }),
             QString("unknown property 'foo' on type 'ZT-Sim Depth Node'"));
    const QString wrongRead = messageOf<ArgumentException>([&] { Property<float>::getValue(iface, "illuminationLevel"); });
    QVERIFY2(wrongRead.contains("'illuminationLevel'") && wrongRead.contains("float") && wrongRead.contains("int"),
             qPrintable(wrongRead));
    const QString wrongWrite =
        messageOf<ArgumentException>([&] { Property<bool>::setValue(iface, "illuminationLevel", true); });
    QVERIFY2(wrongWrite.contains("'illuminationLevel'") && wrongWrite.contains("bool") && wrongWrite.contains("int"),
             qPrintable(wrongWrite));
    const PropertyBase level = depth.getType().getProperty("illuminationLevel");
    QVERIFY(level.is<Property<int32_t>>() && !level.is<Property<float>>());
    QVERIFY(messageOf<ArgumentException>([&] { level.as<Property<float>>(); }).contains("int"));

    // Read-only for everybody, even with control.
    const float range = Property<float>::getValue(iface, "range");
    context.requestControl(device);
    QVERIFY(messageOf<InvalidOperationException>([&] { Property<float>::setValue(iface, "range", 9.f); })
                .contains("read-only"));
    QCOMPARE(Property<float>::getValue(iface, "range"), range);
    context.releaseControl(device);

    // Needs control: refused, nothing changes.
    QVERIFY(level.isReadOnly(iface));
    QCOMPARE(messageOf<InvalidOperationException>([&] { Property<int32_t>::setValue(iface, "illuminationLevel", 10); }),
             QString("control of depth node of device ZS0001 is needed to change 'illuminationLevel'"));
    QCOMPARE(Property<int32_t>::getValue(iface, "illuminationLevel"), 80);
    QVERIFY(messageOf<InvalidOperationException>(
                [&] { Property<std::string>::setValue(Interface(device), "deviceName", "mine"); })
                .contains("control of device ZS0001"));

    // Delivery options need no control.
    const PropertyBase enable = depth.getType().getProperty("enableDepthMap");
    QVERIFY(!enable.isReadOnly(iface));
    enable.as<Property<bool>>().setValue(iface, true);
    QCOMPARE(Property<bool>::getValue(iface, "enableDepthMap"), true);

    // Control of the device covers its nodes.
    context.requestControl(device);
    QVERIFY(!level.isReadOnly(iface));
    Property<int32_t>::setValue(iface, "illuminationLevel", 10);
    QCOMPARE(Property<int32_t>::getValue(iface, "illuminationLevel"), 10);
    Property<std::string>::setValue(Interface(device), "deviceName", "mine");
    QCOMPARE(Property<std::string>::getValue(Interface(device), "deviceName"), std::string("mine"));
    // The plug-in refuses values it does not take; the value stays.
    QVERIFY(messageOf<ArgumentException>([&] { Property<int32_t>::setValue(iface, "illuminationLevel", 1000); }) != "<no exception>");
    QCOMPARE(Property<int32_t>::getValue(iface, "illuminationLevel"), 10);
    // A property handle of another type is refused, not looked up by name.
    const PropertyBase brightness = color.getType().getProperty("brightness");
    QVERIFY(messageOf<ArgumentException>([&] { brightness.setValue(iface, PropertyValue(int32_t(5))); })
                .contains("does not belong"));
    context.releaseControl(device);
    QVERIFY(level.isReadOnly(iface));
}

void TestSdkRuntime::configurationsNeedControl()
{
    Context context = Context::createStandalone();
    DepthNode depth = nodeOf<DepthNode>(context.getDevices()[0]);
    const std::vector<DepthNode::Configuration> offered = depth.getConfigurations();
    const DepthNode::Configuration initial = depth.getConfiguration();
    QVERIFY(std::find(offered.begin(), offered.end(), initial) != offered.end());
    QCOMPARE(Property<DepthNodeConfiguration>::getValue(Interface(depth), "configuration"), initial);

    DepthNode::Configuration close = initial;
    close.mode = close.mode == CAMERA_MODE_CLOSE_RANGE ? CAMERA_MODE_LONG_RANGE : CAMERA_MODE_CLOSE_RANGE;
    QVERIFY(std::find(offered.begin(), offered.end(), close) != offered.end());
    QVERIFY(messageOf<InvalidOperationException>([&] { depth.setConfiguration(close); }).contains("control of depth node"));
    QCOMPARE(depth.getConfiguration(), initial);

    context.requestControl(depth);
    const float range = depth.getRange();
    depth.setConfiguration(close);
    QCOMPARE(depth.getConfiguration(), close);
    QVERIFY(depth.getRange() != range);
    QCOMPARE(Property<float>::getValue(Interface(depth), "range"), depth.getRange());

    DepthNode::Configuration odd = close;
    odd.frameRate = 7;
    QVERIFY(messageOf<ArgumentException>([&] { depth.setConfiguration(odd); }) != "<no exception>");
    QCOMPARE(depth.getConfiguration(), close);

    ColorNode color = nodeOf<ColorNode>(context.getDevices()[0]);
    AudioNode audio = nodeOf<AudioNode>(context.getDevices()[0]);
    QVERIFY(!color.getConfigurations().empty());
    QVERIFY(!audio.getConfigurations().empty());
    QVERIFY(messageOf<InvalidOperationException>([&] { audio.setConfiguration(audio.getConfiguration()); })
                .contains("control of audio node"));
}

void TestSdkRuntime::eventsRunOnTheRunThread()
{
    Context context = Context::createStandalone();
    const Device device = context.getDevices()[0];
    DepthNode depth = nodeOf<DepthNode>(device);
    const Interface iface(depth);

    Recorder<std::string> changes;
    FunctionHandler<Node, PropertyChangedData> onChange([&](Node node, PropertyChangedData data) {
        QCOMPARE(node, Node(depth));
        changes.add(data.property.name());
    });
    depth.propertyChangedEvent().connect(&onChange);

    // Nothing is dispatched outside run(); repeated changes of one property wait as one event.
    Property<bool>::setValue(iface, "enableDepthMap", true);
    Property<bool>::setValue(iface, "enableDepthMap", false);
    QTest::qWait(30);
    QCOMPARE(changes.size(), std::size_t(0));

    std::unique_ptr<EventLoop> holder;
    EventLoop* loop = startLoop(holder, context);
    QTRY_COMPARE(changes.size(), std::size_t(1));
    QCOMPARE(changes.items()[0], std::string("enableDepthMap"));

    context.requestControl(depth);
    DepthNode::Configuration other = depth.getConfiguration();
    other.mode = other.mode == CAMERA_MODE_CLOSE_RANGE ? CAMERA_MODE_LONG_RANGE : CAMERA_MODE_CLOSE_RANGE;
    depth.setConfiguration(other);
    QTRY_VERIFY(changes.size() >= 3);
    const std::vector<std::string> names = changes.items();
    QVERIFY(std::find(names.begin(), names.end(), "configuration") != names.end());
    QVERIFY(std::find(names.begin(), names.end(), "range") != names.end());

    QCOMPARE(changes.threads(), std::set<std::thread::id> {loop->threadId()});
    QVERIFY(loop->threadId() != std::this_thread::get_id());
    QVERIFY(messageOf<InvalidOperationException>([&] { context.run(); }).contains("already running"));

    depth.propertyChangedEvent().disconnect(&onChange);
    loop->stop();
    QVERIFY(loop->transportError().empty());
}

void TestSdkRuntime::quitBeforeAndDuringRun()
{
    Context context = Context::createStandalone();
    context.quit();
    context.quit();
    QElapsedTimer timer;
    timer.start();
    context.run(); // quit before run: returns at once
    QVERIFY(timer.elapsed() < 500);

    // The request was used up: this run waits for a quit from another thread.
    std::thread quitter([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        context.quit();
    });
    timer.restart();
    context.run();
    QVERIFY(timer.elapsed() >= 140);
    quitter.join();
}

void TestSdkRuntime::queueHoldsTwoSamplesAndCountsDrops()
{
    Control::setStepped(true);
    Context context = Context::createStandalone();
    const Device device = context.getDevices()[0];
    DepthNode depth = nodeOf<DepthNode>(device);
    ColorNode color = nodeOf<ColorNode>(device);
    Property<bool>::setValue(Interface(depth), "enableDepthMap", true);
    Property<bool>::setValue(Interface(depth), "enablePhaseMap", true);
    Property<bool>::setValue(Interface(color), "enableColorMap", true);

    Recorder<DepthNode::NewSampleReceivedData> depthSamples;
    Recorder<int> colorSamples;
    FunctionHandler<DepthNode, DepthNode::NewSampleReceivedData> onDepth(
        [&](DepthNode, DepthNode::NewSampleReceivedData data) { depthSamples.add(data); });
    FunctionHandler<ColorNode, ColorNode::NewSampleReceivedData> onColor(
        [&](ColorNode, ColorNode::NewSampleReceivedData) { colorSamples.add(0); });
    depth.newSampleReceivedEvent().connect(&onDepth);
    color.newSampleReceivedEvent().connect(&onColor);

    context.registerNode(depth); // the colour node stays unregistered
    context.startNodes();
    Control::step(5); // nobody is dispatching: 1 and 2 wait, 3, 4 and 5 each push out the oldest

    std::unique_ptr<EventLoop> holder;
    startLoop(holder, context);
    QTRY_COMPARE(depthSamples.size(), std::size_t(2));
    QTest::qWait(50);
    QCOMPARE(depthSamples.size(), std::size_t(2));
    QCOMPARE(colorSamples.size(), std::size_t(0));

    std::vector<DepthNode::NewSampleReceivedData> got = depthSamples.items();
    QCOMPARE(got[0].droppedSampleCount, 3);
    QCOMPARE(got[0].droppedSampleTotalCount, 3);
    QCOMPARE(got[1].droppedSampleCount, 0);
    QCOMPARE(got[1].droppedSampleTotalCount, 3);
    QVERIFY(got[0].timeOfCapture < got[1].timeOfCapture);
    for (const auto& sample : got) {
        QVERIFY(sample.timeOfArrival >= sample.timeOfCapture && sample.timeOfCapture > 0);
        int32_t width = 0, height = 0;
        FrameFormat_toResolution(sample.captureConfiguration.frameFormat, &width, &height);
        QVERIFY(width > 0);
        QVERIFY(sample.depthMap.data() && sample.depthMap.size() == width * height);
        QVERIFY(sample.phaseMap.data());
        QVERIFY(!sample.confidenceMap.data()); // switched off
    }

    Control::step(1);
    QTRY_COMPARE(depthSamples.size(), std::size_t(3));
    QCOMPARE(depthSamples.items()[2].droppedSampleCount, 0);
    QCOMPARE(depthSamples.items()[2].droppedSampleTotalCount, 3);

    // Registering while started starts that node; unregistering stops it.
    context.registerNode(color);
    Control::step(1);
    QTRY_COMPARE(colorSamples.size(), std::size_t(1));
    QTRY_COMPARE(depthSamples.size(), std::size_t(4));
    context.unregisterNode(color);
    Control::step(1);
    QTRY_COMPARE(depthSamples.size(), std::size_t(5));
    QTest::qWait(30);
    QCOMPARE(colorSamples.size(), std::size_t(1));

    // Stopped: nothing more, and nothing waiting is delivered late.
    context.stopNodes();
    Control::step(2);
    QTest::qWait(50);
    QCOMPARE(depthSamples.size(), std::size_t(5));
    context.startNodes();
    Control::step(1);
    QTRY_COMPARE(depthSamples.size(), std::size_t(6));
    QCOMPARE(depthSamples.items()[5].droppedSampleCount, 0);

    holder->stop();
    depth.newSampleReceivedEvent().disconnect(&onDepth);
    color.newSampleReceivedEvent().disconnect(&onColor);
}

void TestSdkRuntime::hotPlugAndGoneHandles()
{
    Control::setStepped(true);
    Context context = Context::createStandalone();
    Device first = context.getDevices()[0];

    Recorder<Device> added, removed;
    Recorder<Node> nodesAdded, nodesRemoved;
    FunctionHandler<Device, Device::NodeAddedData> onNodeAdded([&](Device, Device::NodeAddedData d) { nodesAdded.add(d.node); });
    FunctionHandler<Device, Device::NodeRemovedData> onNodeRemoved(
        [&](Device, Device::NodeRemovedData d) { nodesRemoved.add(d.node); });
    FunctionHandler<Context, Context::DeviceAddedData> onAdded([&](Context, Context::DeviceAddedData d) {
        d.device.nodeAddedEvent().connect(&onNodeAdded); // as the viewer does: its nodes follow as events
        d.device.nodeRemovedEvent().connect(&onNodeRemoved);
        added.add(d.device);
    });
    FunctionHandler<Context, Context::DeviceRemovedData> onRemoved(
        [&](Context, Context::DeviceRemovedData d) { removed.add(d.device); });
    context.deviceAddedEvent().connect(&onAdded);
    context.deviceRemovedEvent().connect(&onRemoved);
    first.nodeAddedEvent().connect(&onNodeAdded);
    first.nodeRemovedEvent().connect(&onNodeRemoved);

    std::unique_ptr<EventLoop> holder;
    startLoop(holder, context);

    Control::addCamera("ZS0042");
    QTRY_COMPARE(added.size(), std::size_t(1));
    const Device plugged = added.items()[0];
    QCOMPARE(plugged.getSerialNumber(), std::string("ZS0042"));
    QTRY_COMPARE(nodesAdded.size(), std::size_t(3));
    QCOMPARE(context.getDevices().size(), std::size_t(2));
    QCOMPARE(context.getDevices()[1], plugged);

    Control::addNode("ZS0001", NodeKind::Unsupported);
    QTRY_COMPARE(nodesAdded.size(), std::size_t(4));
    const Node unsupported = nodesAdded.items()[3];
    QVERIFY(unsupported.is<UnsupportedNode>());
    QCOMPARE(unsupported.getDevice(), first);
    QCOMPARE(unsupported.as<UnsupportedNode>().getReason(), UnsupportedNode::REASON_FIRMWARE_UPDATE_REQUIRED);
    Control::removeNode("ZS0001", NodeKind::Unsupported);
    QTRY_COMPARE(nodesRemoved.size(), std::size_t(1));
    QCOMPARE(nodesRemoved.items()[0], unsupported);
    QVERIFY(!unsupported.isConnected());
    QCOMPARE(messageOf<InvalidOperationException>([&] { unsupported.getSerialNumber(); }),
             QString("unsupported node of device ZS0001 is no longer connected"));
    QCOMPARE(first.getNodes().size(), std::size_t(3));

    // Unplug a camera whose depth node streams.
    DepthNode streaming = nodeOf<DepthNode>(plugged);
    context.registerNode(streaming);
    context.startNodes();
    Control::step(1);
    Control::removeCamera("ZS0042");
    QTRY_COMPARE(removed.size(), std::size_t(1));
    QTRY_COMPARE(nodesRemoved.size(), std::size_t(4));
    const Device copy = removed.items()[0];
    QCOMPARE(copy, plugged);
    QVERIFY(!plugged.isConnected());
    QVERIFY(!streaming.isConnected());
    QCOMPARE(messageOf<InvalidOperationException>([&] { plugged.getSerialNumber(); }),
             QString("device ZS0042 is no longer connected"));
    QVERIFY(messageOf<InvalidOperationException>([&] { plugged.getNodes(); }).contains("no longer connected"));
    QVERIFY(messageOf<InvalidOperationException>([&] { streaming.getConfiguration(); }).contains("no longer connected"));
    QVERIFY(messageOf<InvalidOperationException>([&] { Property<bool>::getValue(Interface(streaming), "enableDepthMap"); })
                .contains("no longer connected"));
    QVERIFY(messageOf<InvalidOperationException>([&] { context.requestControl(plugged); }).contains("no longer connected"));
    QVERIFY(messageOf<InvalidOperationException>([&] { context.registerNode(streaming); }).contains("no longer connected"));
    QVERIFY(!plugged.getOverheated());
    QCOMPARE(context.getDevices().size(), std::size_t(1));
    Control::step(2); // the remaining camera streams nothing; nothing must break
    context.stopNodes();

    // A camera that overheats unplugs itself and says why afterwards.
    Control::setOverheating("ZS0001", true, true);
    QTRY_COMPARE(removed.size(), std::size_t(2));
    QVERIFY(first.getOverheated());
    QVERIFY(context.getDevices().empty());

    holder->stop();
    context.deviceAddedEvent().disconnect(&onAdded);
    context.deviceRemovedEvent().disconnect(&onRemoved);
}

void TestSdkRuntime::controlIsExclusive()
{
    Context context = Context::createStandalone();
    const Device device = context.getDevices()[0];
    const DepthNode depth = nodeOf<DepthNode>(device);

    Control::setControlledByAnotherClient("ZS0001", true);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(messageOf<TimeoutException>([&] { context.requestControl(device, 0); }),
             QString("control of device ZS0001 is held by another client"));
    QVERIFY(timer.elapsed() < 100);
    timer.restart();
    QCOMPARE(messageOf<TimeoutException>([&] { context.requestControl(depth, 120); }),
             QString("control of depth node of device ZS0001 is held by another client"));
    QVERIFY(timer.elapsed() >= 110);
    QVERIFY(!context.hasControl(device) && !context.hasControl(depth));

    // Given up by the other client while we wait.
    std::thread other([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        Control::setControlledByAnotherClient("ZS0001", false);
    });
    context.requestControl(device, 3000);
    other.join();
    QVERIFY(context.hasControl(device));
    QVERIFY(context.hasControl(depth)); // through its device
    context.requestControl(device); // again: nothing changes
    context.releaseControl(depth);  // never asked for: no-op
    QVERIFY(context.hasControl(depth));
    context.releaseControl(device);
    QVERIFY(!context.hasControl(device) && !context.hasControl(depth));
    context.releaseControl(device);

    context.requestControl(depth);
    QVERIFY(context.hasControl(depth) && !context.hasControl(device));

    Context second = Context::createStandalone();
    QVERIFY(!second.hasControl(nodeOf<DepthNode>(second.getDevices()[0])));
    QVERIFY(!second.hasControl(depth)); // not one of its handles
    QVERIFY(messageOf<ArgumentException>([&] { second.requestControl(device); }).contains("another context"));
}

void TestSdkRuntime::injectedFailures()
{
    Context context = Context::createStandalone();
    const Device device = context.getDevices()[0];
    const DepthNode depth = nodeOf<DepthNode>(device);

    Control::injectException("Context::registerNode", FaultInjector::Kind::InvalidOperation, "no slot free", 1);
    QCOMPARE(messageOf<InvalidOperationException>([&] { context.registerNode(depth); }), QString("no slot free"));
    context.registerNode(depth);

    Control::injectException("Device::getSerialNumber", FaultInjector::Kind::Timeout, "slow", -1);
    QCOMPARE(messageOf<TimeoutException>([&] { device.getSerialNumber(); }), QString("slow"));
    QCOMPARE(messageOf<TimeoutException>([&] { device.getSerialNumber(); }), QString("slow"));
    FaultInjector::clear();
    QCOMPARE(device.getSerialNumber(), std::string("ZS0001"));

    Control::injectException("PropertyBase::setValue", FaultInjector::Kind::Argument, "refused", 1);
    QCOMPARE(messageOf<ArgumentException>([&] { Property<bool>::setValue(Interface(depth), "enableDepthMap", true); }),
             QString("refused"));
    QCOMPARE(Property<bool>::getValue(Interface(depth), "enableDepthMap"), false);

    Control::injectException("Context::startNodes", FaultInjector::Kind::Transport, "bus error", 1);
    QCOMPARE(messageOf<TransportException>([&] { context.startNodes(); }), QString("bus error"));
    Control::injectException("DepthNode::getConfigurations", FaultInjector::Kind::Exception, "broken", 1);
    try {
        depth.getConfigurations();
        QFAIL("no exception");
    } catch (const ArgumentException&) {
        QFAIL("wrong kind");
    } catch (const Exception& e) {
        QCOMPARE(std::string(e.what()), std::string("broken"));
    }
    QVERIFY(!depth.getConfigurations().empty());
}

void TestSdkRuntime::transportFailureEndsRun()
{
    Context context = Context::createStandalone();
    std::unique_ptr<EventLoop> holder;
    EventLoop* loop = startLoop(holder, context);
    QTest::qWait(30);
    QVERIFY(!loop->finished());
    Control::failTransport("cable cut");
    QTRY_VERIFY(loop->finished());
    QCOMPARE(loop->transportError(), std::string("cable cut"));
    holder.reset();

    // Reported before run(): the next run ends at once, and only that one.
    Control::reset();
    Context later = Context::createStandalone();
    Control::failTransport("server gone");
    QCOMPARE(messageOf<TransportException>([&] { later.run(); }), QString("server gone"));
    later.quit();
    later.run();
}

void TestSdkRuntime::clockedStreamingAndTeardown()
{
    Device kept;
    Recorder<int32_t> depthDrops;
    FunctionHandler<DepthNode, DepthNode::NewSampleReceivedData> onDepth(
        [&](DepthNode, DepthNode::NewSampleReceivedData data) { depthDrops.add(data.droppedSampleCount); });
    {
        Control::addCamera("ZS0002");
        Context context = Context::createStandalone();
        kept = context.getDevices()[0];
        const Device unplugged = context.getDevices()[1];
        for (const Device& device : context.getDevices()) {
            for (const Node& node : device.getNodes()) {
                for (const PropertyBase& property : node.getType().getProperties()) {
                    if (property.name().rfind("enable", 0) == 0)
                        property.setValue(Interface(node), PropertyValue(true));
                }
                context.registerNode(node);
            }
        }
        DepthNode depth = nodeOf<DepthNode>(kept);
        depth.newSampleReceivedEvent().connect(&onDepth);
        std::unique_ptr<EventLoop> holder;
        startLoop(holder, context);
        context.startNodes();
        QTRY_VERIFY_WITH_TIMEOUT(depthDrops.size() >= 3, 30000); // generous: sanitizer builds render slowly
        // Stop and start again while the device threads produce.
        context.stopNodes();
        context.startNodes();
        const std::size_t before = depthDrops.size();
        QTRY_VERIFY_WITH_TIMEOUT(depthDrops.size() > before, 30000);
        // A camera unplugged while its device threads produce.
        Control::removeCamera("ZS0002");
        QVERIFY(!unplugged.isConnected());
        const std::size_t after = depthDrops.size();
        QTRY_VERIFY_WITH_TIMEOUT(depthDrops.size() > after, 30000);
        holder->stop();
        depth.newSampleReceivedEvent().disconnect(&onDepth);
        // The context goes away while its nodes stream.
    }
    QVERIFY(!kept.isConnected());
    QVERIFY(messageOf<InvalidOperationException>([&] { kept.getSerialNumber(); }).contains("no longer connected"));
}

QTEST_GUILESS_MAIN(TestSdkRuntime)
#include "tst_sdkruntime.moc"
