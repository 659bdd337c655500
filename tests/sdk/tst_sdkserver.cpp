// Server mode: the camera library's client side against a private zerlane-server core, with the
// simulated cameras stepped by the test.

#include "PrivateServer.h"
#include "SdkTestSupport.h"

#include "FrameReader.h"
#include "FrameWriter.h"
#include "SocketStream.h"
#include "WireLimits.h"

#include "Zerlane/sim/SimulatorControl.h"

#include <QElapsedTimer>
#include <QtTest>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <poll.h>
#include <unistd.h>

using namespace Zerlane;
using namespace SdkTestSupport;
using Zerlane::Sim::Control;
using Zerlane::server::Server;

namespace {

// A hand-made client that speaks (or misspeaks) the protocol byte by byte.
class RawClient {
public:
    explicit RawClient(uint16_t port, int receiveBuffer = 0)
    {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        if (receiveBuffer > 0)
            ::setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            qFatal("cannot connect to the private server");
        m_stream = std::make_unique<wire::SocketStream>(fd);
    }

    // False once the server has closed the connection.
    bool send(const std::string& bytes)
    {
        return ::send(m_stream->fd(), bytes.data(), bytes.size(), MSG_NOSIGNAL) == ssize_t(bytes.size());
    }
    static std::string frame(const wire::Envelope& envelope) { return wire::FrameWriter::frame(envelope); }
    static std::string length(uint32_t value)
    {
        uint8_t bytes[4];
        wire::FrameWriter::encodeLength(value, bytes);
        return std::string(reinterpret_cast<char*>(bytes), 4);
    }
    wire::Welcome hello(uint32_t version = wire::WireLimits::VERSION)
    {
        wire::Envelope envelope;
        envelope.mutable_hello()->set_magic(wire::WireLimits::MAGIC);
        envelope.mutable_hello()->set_version(version);
        envelope.mutable_hello()->set_name("raw");
        envelope.mutable_hello()->set_pid(4242);
        send(frame(envelope));
        wire::FrameReader reader(*m_stream);
        return reader.readEnvelope().welcome();
    }
    static std::string request(wire::Operation op, uint32_t target, uint64_t serial = 1)
    {
        wire::Envelope envelope;
        envelope.mutable_request()->set_serial(serial);
        envelope.mutable_request()->set_op(op);
        envelope.mutable_request()->set_target(target);
        return frame(envelope);
    }
    wire::Envelope read()
    {
        wire::FrameReader reader(*m_stream);
        return reader.readEnvelope();
    }
    // Reads and discards until the server closes the connection; false if it stays open that long.
    bool closedByServerWithin(int ms)
    {
        QElapsedTimer timer;
        timer.start();
        char buffer[65536];
        while (timer.elapsed() < ms) {
            pollfd entry {m_stream->fd(), POLLIN, 0};
            if (::poll(&entry, 1, 20) <= 0)
                continue;
            const ssize_t got = ::recv(m_stream->fd(), buffer, sizeof buffer, 0);
            if (got <= 0)
                return true;
        }
        return false;
    }
    // Ends the connection with a reset, as a killed process's socket may.
    void kill()
    {
        linger hard {1, 0};
        ::setsockopt(m_stream->fd(), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        m_stream.reset();
    }
    int fd() const { return m_stream->fd(); }

private:
    std::unique_ptr<wire::SocketStream> m_stream;
};

uint32_t nodeId(const wire::Welcome& welcome, NodeKind kind)
{
    for (const wire::NodeInfo& node : welcome.devices(0).nodes()) {
        if (node.kind() == static_cast<int32_t>(kind))
            return node.id();
    }
    return 0;
}

// Samples of a node as one client's handlers saw them.
struct DepthSamples {
    Recorder<DepthNode::NewSampleReceivedData> samples;
    FunctionHandler<DepthNode, DepthNode::NewSampleReceivedData> handler {
        [this](DepthNode, DepthNode::NewSampleReceivedData data) { samples.add(data); }};
    int32_t dropped() const
    {
        int32_t sum = 0;
        for (const auto& sample : samples.items())
            sum += sample.droppedSampleCount;
        return sum;
    }
};

} // namespace

class TestSdkServer : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void wholeApiThroughTheConnection();
    void samplesOfAllKindsAndTheDropRule();
    void controlIsExclusiveBetweenClients();
    void clientsSeeEachOtherComeAndGo();
    void hotPlugReachesEveryClient();
    void serverLossEndsRunAndEveryLaterCall();
    void badClientsAreCutOffAlone();
    void clientLimitAndProtocolVersion();
};

void TestSdkServer::initTestCase()
{
    ::signal(SIGPIPE, SIG_IGN);
    // The reference is kept for the whole run: releasing the last one would bring the echo back.
    Utils::HMLogger::instance()->setEchoToStderr(false);
}

void TestSdkServer::init()
{
    Control::reset();
}

void TestSdkServer::cleanup()
{
    Control::reset();
}

void TestSdkServer::wholeApiThroughTheConnection()
{
    PrivateServer server;
    QVERIFY(server.port() != Context::DEFAULT_PORT);
    Context context = server.connect();
    const std::vector<Device> devices = context.getDevices();
    QCOMPARE(devices.size(), std::size_t(1));
    QVERIFY(context.getDevices() == devices);
    const Device device = devices[0];
    QCOMPARE(device.getSerialNumber(), std::string("ZS0001"));
    QCOMPARE(device.getModel(), Device::MODEL_ZT_SIM);
    QVERIFY(device.getUsbBackendVersion() > 0 && device.getTofControllerVersion() > 0);
    QVERIFY(!device.getOverheating() && !device.getOverheated());
    Control::setOverheating("ZS0001", true);
    QVERIFY(device.getOverheating());

    // Types, and property handles that compare equal between devices of one type.
    const std::vector<Node> nodes = device.getNodes();
    QCOMPARE(nodes.size(), std::size_t(3));
    DepthNode depth = nodeOf<DepthNode>(device);
    ColorNode color = nodeOf<ColorNode>(device);
    AudioNode audio = nodeOf<AudioNode>(device);
    QVERIFY(depth.isSet() && color.isSet() && audio.isSet());
    QCOMPARE(depth.getSerialNumber(), std::string("ZS0001"));
    QVERIFY(depth.getVID() != 0 && depth.getPID() != 0);
    Context second = server.connect();
    Device other = second.getDevices()[0];
    QCOMPARE(other.getType().name(), device.getType().name());
    QVERIFY(other != device); // another context's handle

    // Properties: read everywhere; written only with control, never when read-only.
    const Interface deviceInterface(device);
    const PropertyBase fanSpeed = device.getType().getProperty("fanSpeed");
    QVERIFY(fanSpeed.is<Property<int32_t>>());
    QVERIFY(fanSpeed.isReadOnly(deviceInterface));
    QVERIFY(messageOf<InvalidOperationException>([&] { Property<int32_t>::setValue(deviceInterface, "fanSpeed", 3000); })
                .contains("control of device ZS0001 is needed"));
    context.requestControl(device);
    QVERIFY(context.hasControl(device) && context.hasControl(depth));
    QVERIFY(!fanSpeed.isReadOnly(deviceInterface));
    Property<int32_t>::setValue(deviceInterface, "fanSpeed", 3000);
    QCOMPARE(Property<int32_t>::getValue(Interface(other), "fanSpeed"), 3000);
    QVERIFY(messageOf<InvalidOperationException>([&] { Property<float>::setValue(deviceInterface, "temperature", 1.f); })
                .contains("read-only"));
    QVERIFY(messageOf<ArgumentException>([&] { Property<bool>::setValue(deviceInterface, "fanSpeed", true); })
                .contains("holds int values"));
    QVERIFY(messageOf<ArgumentException>([&] { Property<int32_t>::getValue(deviceInterface, "noSuchThing"); })
                .contains("unknown property 'noSuchThing'"));
    const float range = depth.getRange();
    QVERIFY(range > 0.f);
    QCOMPARE(Property<float>::getValue(Interface(depth), "range"), range);
    QVERIFY(!depth.getDepthMap3Planes());

    // Configurations: listed, current, changed; one not offered is refused with ArgumentException.
    const std::vector<DepthNode::Configuration> offered = depth.getConfigurations();
    QVERIFY(offered.size() > 4);
    QVERIFY(!color.getConfigurations().empty() && !audio.getConfigurations().empty());
    const DepthNode::Configuration wanted = offered.back();
    depth.setConfiguration(wanted);
    QCOMPARE(depth.getConfiguration(), wanted);
    QCOMPARE(nodeOf<DepthNode>(other).getConfiguration(), wanted);
    DepthNode::Configuration bogus = wanted;
    bogus.frameRate = 7;
    QVERIFY(!messageOf<ArgumentException>([&] { depth.setConfiguration(bogus); }).startsWith("<"));
    QCOMPARE(depth.getConfiguration(), wanted);
    // The other client holds no control: its library refuses, and so would the server.
    QVERIFY(messageOf<InvalidOperationException>([&] { nodeOf<DepthNode>(other).setConfiguration(offered.front()); })
                .contains("control"));

    // A change made by one client is an event of the other.
    Recorder<std::string> changes;
    FunctionHandler<Device, PropertyChangedData> onChange(
        [&](Device, PropertyChangedData d) { changes.add(d.property.name()); });
    other.propertyChangedEvent().connect(&onChange);
    std::unique_ptr<EventLoop> loop;
    startLoop(loop, second);
    Property<std::string>::setValue(deviceInterface, "deviceName", "bench camera");
    // The earlier fanSpeed write waited in the queue; the name follows.
    QTRY_COMPARE(changes.size(), std::size_t(2));
    QCOMPARE(changes.items(), (std::vector<std::string> {"fanSpeed", "deviceName"}));
    QCOMPARE(Property<std::string>::getValue(Interface(other), "deviceName"), std::string("bench camera"));
    loop->stop();
    other.propertyChangedEvent().disconnect(&onChange);

    // An unsupported node keeps its reason across the wire.
    Control::addNode("ZS0001", NodeKind::Unsupported);
    Context third = server.connect();
    const std::vector<Node> withUnsupported = third.getDevices()[0].getNodes();
    QCOMPARE(withUnsupported.size(), std::size_t(4));
    QCOMPARE(withUnsupported.back().as<UnsupportedNode>().getReason(), UnsupportedNode::REASON_FIRMWARE_UPDATE_REQUIRED);
}

void TestSdkServer::samplesOfAllKindsAndTheDropRule()
{
    Control::setStepped(true);
    PrivateServer server;
    Context fast = server.connect();
    Context slow = server.connect();
    const Device fastDevice = fast.getDevices()[0];
    DepthNode depth = nodeOf<DepthNode>(fastDevice);
    ColorNode color = nodeOf<ColorNode>(fastDevice);
    AudioNode audio = nodeOf<AudioNode>(fastDevice);
    DepthNode slowDepth = nodeOf<DepthNode>(slow.getDevices()[0]);
    for (const char* map : {"enableDepthMap", "enablePhaseMap", "enableVerticesFloatingPoint", "enableUvMap"})
        Property<bool>::setValue(Interface(depth), map, true);
    Property<bool>::setValue(Interface(depth), "enableConfidenceMap", false);
    Property<bool>::setValue(Interface(color), "enableColorMap", true);

    DepthSamples fastSamples, slowSamples;
    Recorder<ColorNode::NewSampleReceivedData> colorSamples;
    Recorder<AudioNode::NewSampleReceivedData> audioSamples;
    FunctionHandler<ColorNode, ColorNode::NewSampleReceivedData> onColor(
        [&](ColorNode, ColorNode::NewSampleReceivedData d) { colorSamples.add(d); });
    FunctionHandler<AudioNode, AudioNode::NewSampleReceivedData> onAudio(
        [&](AudioNode, AudioNode::NewSampleReceivedData d) { audioSamples.add(d); });
    depth.newSampleReceivedEvent().connect(&fastSamples.handler);
    color.newSampleReceivedEvent().connect(&onColor);
    audio.newSampleReceivedEvent().connect(&onAudio);
    slowDepth.newSampleReceivedEvent().connect(&slowSamples.handler);

    for (const Node& node : {Node(depth), Node(color), Node(audio)})
        fast.registerNode(node);
    fast.startNodes();
    slow.registerNode(slowDepth);
    slow.startNodes();
    std::unique_ptr<EventLoop> fastLoop;
    startLoop(fastLoop, fast);

    // The fast client takes every sample one by one; the slow one dispatches nothing meanwhile.
    constexpr int kSteps = 12;
    for (int i = 1; i <= kSteps; ++i) {
        Control::step(1);
        QTRY_COMPARE(fastSamples.samples.size(), std::size_t(i));
    }
    QTRY_COMPARE(colorSamples.size(), std::size_t(kSteps));
    QTRY_COMPARE(audioSamples.size(), std::size_t(kSteps));
    QCOMPARE(fastSamples.dropped(), 0);

    const DepthNode::NewSampleReceivedData first = fastSamples.samples.items()[0];
    int32_t width = 0, height = 0;
    FrameFormat_toResolution(first.captureConfiguration.frameFormat, &width, &height);
    QVERIFY(width > 0 && height > 0);
    QCOMPARE(first.depthMap.size(), width * height);
    QCOMPARE(first.phaseMap.size(), width * height);
    QCOMPARE(first.verticesFloatingPoint.size(), width * height);
    QCOMPARE(first.uvMap.size(), width * height);
    QVERIFY(!first.confidenceMap.data() && !first.vertices.data());
    QVERIFY(first.timeOfCapture > 0 && first.timeOfArrival >= first.timeOfCapture);
    const float gravity = first.acceleration.x * first.acceleration.x + first.acceleration.y * first.acceleration.y
                        + first.acceleration.z * first.acceleration.z;
    QVERIFY(gravity > 0.8f && gravity < 1.2f);
    const ColorNode::NewSampleReceivedData colorSample = colorSamples.items()[0];
    FrameFormat_toResolution(colorSample.captureConfiguration.frameFormat, &width, &height);
    QCOMPARE(colorSample.colorMap.size(), width * height * 2); // YUY2
    const AudioNode::NewSampleReceivedData audioSample = audioSamples.items()[0];
    QVERIFY(audioSample.audioFormat.sampleRate > 0);
    QCOMPARE(audioSample.audioData.size(), audioSample.audioFormat.sampleRate / 20 * audioSample.audioFormat.nbChannels
                                               * audioSample.audioFormat.bitsPerSample / 8);

    // The slow client gets the last two; everything before is dropped and counted, wherever on the way.
    std::unique_ptr<EventLoop> slowLoop;
    startLoop(slowLoop, slow);
    QTRY_COMPARE(slowSamples.samples.size(), std::size_t(2));
    QTest::qWait(50);
    QCOMPARE(slowSamples.samples.size(), std::size_t(2));
    QCOMPARE(slowSamples.dropped(), kSteps - 2);
    QCOMPARE(slowSamples.samples.items()[1].droppedSampleTotalCount, kSteps - 2);
    QCOMPARE(slowSamples.samples.items()[1].timeOfCapture, fastSamples.samples.items()[kSteps - 1].timeOfCapture);
    // Both clients got the same bytes.
    const DepthNode::NewSampleReceivedData last = slowSamples.samples.items()[1];
    const DepthNode::NewSampleReceivedData same = fastSamples.samples.items()[kSteps - 1];
    QVERIFY(std::equal(last.depthMap.data(), last.depthMap.data() + last.depthMap.size(), same.depthMap.data()));

    // A node streams while any client streams it: the fast client stopping leaves the slow one served.
    fast.stopNodes();
    Control::step(1);
    QTRY_COMPARE(slowSamples.samples.size(), std::size_t(3));
    QTest::qWait(30);
    QCOMPARE(fastSamples.samples.size(), std::size_t(kSteps));
    slow.unregisterNode(slowDepth);
    Control::step(1);
    QTest::qWait(50);
    QCOMPARE(slowSamples.samples.size(), std::size_t(3));

    fastLoop->stop();
    slowLoop->stop();
    depth.newSampleReceivedEvent().disconnect(&fastSamples.handler);
    slowDepth.newSampleReceivedEvent().disconnect(&slowSamples.handler);
    color.newSampleReceivedEvent().disconnect(&onColor);
    audio.newSampleReceivedEvent().disconnect(&onAudio);
}

void TestSdkServer::controlIsExclusiveBetweenClients()
{
    PrivateServer server;
    Context a = server.connect();
    Context b = server.connect();
    const Device deviceA = a.getDevices()[0];
    const Device deviceB = b.getDevices()[0];
    const DepthNode depthA = nodeOf<DepthNode>(deviceA);
    const DepthNode depthB = nodeOf<DepthNode>(deviceB);
    const ColorNode colorB = nodeOf<ColorNode>(deviceB);

    // Per node: two clients may each hold a different node, not the same one, nor the device then.
    a.requestControl(depthA);
    b.requestControl(colorB);
    QCOMPARE(messageOf<TimeoutException>([&] { b.requestControl(depthB); }),
             QString("control of depth node of device ZS0001 is held by another client"));
    QCOMPARE(messageOf<TimeoutException>([&] { b.requestControl(deviceB); }),
             QString("control of device ZS0001 is held by another client"));
    QVERIFY(!b.hasControl(depthB));
    a.releaseControl(depthA);
    b.releaseControl(colorB);

    // Per device: the holder's control covers its nodes for everyone else.
    a.requestControl(deviceA);
    QVERIFY(!messageOf<TimeoutException>([&] { b.requestControl(colorB); }).startsWith("<"));
    a.requestControl(deviceA); // asking again is harmless

    // With a time-out the request waits for the holder to let go.
    std::thread releaser([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        a.releaseControl(deviceA);
    });
    QElapsedTimer timer;
    timer.start();
    b.requestControl(deviceB, 3000);
    releaser.join();
    QVERIFY(timer.elapsed() >= 100);
    QVERIFY(b.hasControl(deviceB));
    QVERIFY(messageOf<TimeoutException>([&] { a.requestControl(deviceA); }).contains("held by another client"));

    // A client that goes away loses its control at once.
    b = Context();
    QTRY_COMPARE(server.server().clientCount(), std::size_t(1));
    a.requestControl(deviceA);
    QVERIFY(a.hasControl(deviceA));

    // Another program holding the camera (the simulator's knob) refuses everyone.
    a.releaseControl(deviceA);
    Control::setControlledByAnotherClient("ZS0001", true);
    QVERIFY(messageOf<TimeoutException>([&] { a.requestControl(deviceA); }).contains("held by another client"));
}

void TestSdkServer::clientsSeeEachOtherComeAndGo()
{
    PrivateServer server;
    Context watcher = server.connect();
    Recorder<Context::ClientData_p> connected, disconnected;
    FunctionHandler<Context, Context::ClientData_p> onConnected([&](Context, Context::ClientData_p c) { connected.add(c); });
    FunctionHandler<Context, Context::ClientData_p> onDisconnected(
        [&](Context, Context::ClientData_p c) { disconnected.add(c); });
    watcher.clientConnectedEvent().connect(&onConnected);
    watcher.clientDisconnectedEvent().connect(&onDisconnected);
    std::unique_ptr<EventLoop> loop;
    startLoop(loop, watcher);

    {
        Context visitor = server.connect();
        QTRY_COMPARE(connected.size(), std::size_t(1));
        const Context::ClientData_p c = connected.items()[0];
        QCOMPARE(c.name, std::string(program_invocation_short_name));
        QCOMPARE(c.pid, int32_t(::getpid()));
        QCOMPARE(c.address, std::string("127.0.0.1"));
        QVERIFY(c.port != 0 && c.port != server.port());
        QCOMPARE(disconnected.size(), std::size_t(0));
    }
    QTRY_COMPARE(disconnected.size(), std::size_t(1));
    QCOMPARE(disconnected.items()[0].port, connected.items()[0].port);
    QCOMPARE(disconnected.items()[0].pid, int32_t(::getpid()));
    QVERIFY(connected.threads() == std::set<std::thread::id> {loop->threadId()});

    // A raw client that only says hello is a client like any other.
    {
        RawClient raw(server.port());
        raw.hello();
        QTRY_COMPARE(connected.size(), std::size_t(2));
        QCOMPARE(connected.items()[1].name, std::string("raw"));
        QCOMPARE(connected.items()[1].pid, 4242);
    }
    QTRY_COMPARE(disconnected.size(), std::size_t(2));
    loop->stop();
}

void TestSdkServer::hotPlugReachesEveryClient()
{
    Control::setStepped(true);
    PrivateServer server;
    Context context = server.connect();
    Recorder<Device> added, removed;
    Recorder<Node> nodesAdded;
    FunctionHandler<Context, Context::DeviceAddedData> onAdded([&](Context, Context::DeviceAddedData d) { added.add(d.device); });
    FunctionHandler<Context, Context::DeviceRemovedData> onRemoved(
        [&](Context, Context::DeviceRemovedData d) { removed.add(d.device); });
    FunctionHandler<Device, Device::NodeAddedData> onNodeAdded([&](Device, Device::NodeAddedData d) { nodesAdded.add(d.node); });
    context.deviceAddedEvent().connect(&onAdded);
    context.deviceRemovedEvent().connect(&onRemoved);
    Device first = context.getDevices()[0];
    first.nodeAddedEvent().connect(&onNodeAdded);
    std::unique_ptr<EventLoop> loop;
    startLoop(loop, context);

    Control::addCamera("ZS0042");
    QTRY_COMPARE(added.size(), std::size_t(1));
    const Device plugged = added.items()[0];
    QCOMPARE(plugged.getSerialNumber(), std::string("ZS0042"));
    QCOMPARE(plugged.getNodes().size(), std::size_t(3));
    QCOMPARE(context.getDevices().size(), std::size_t(2));

    Control::addNode("ZS0001", NodeKind::Unsupported);
    QTRY_COMPARE(nodesAdded.size(), std::size_t(1));
    QVERIFY(nodesAdded.items()[0].is<UnsupportedNode>());

    // Unplugged while streaming to this client: its handles report it gone, nothing hangs.
    DepthNode streaming = nodeOf<DepthNode>(plugged);
    context.registerNode(streaming);
    context.startNodes();
    Control::step(1);
    Control::removeCamera("ZS0042");
    QTRY_COMPARE(removed.size(), std::size_t(1));
    QCOMPARE(removed.items()[0], plugged);
    QVERIFY(!plugged.isConnected() && !streaming.isConnected());
    QVERIFY(messageOf<InvalidOperationException>([&] { plugged.getSerialNumber(); }).contains("no longer connected"));
    QVERIFY(messageOf<InvalidOperationException>([&] { streaming.getConfiguration(); }).contains("no longer connected"));
    QCOMPARE(context.getDevices().size(), std::size_t(1));
    Control::step(1);
    context.stopNodes();
    loop->stop();
}

void TestSdkServer::serverLossEndsRunAndEveryLaterCall()
{
    Control::setStepped(true);
    auto server = std::make_unique<PrivateServer>();
    Context context = server->connect();
    const Device device = context.getDevices()[0];
    DepthNode depth = nodeOf<DepthNode>(device);
    context.registerNode(depth);
    context.startNodes();
    Control::step(1);
    std::unique_ptr<EventLoop> loop;
    startLoop(loop, context);

    QElapsedTimer timer;
    timer.start();
    server->stop();
    QTRY_VERIFY_WITH_TIMEOUT(loop->finished(), 1000);
    QVERIFY(timer.elapsed() < 1000);
    QVERIFY2(loop->transportError().find("connection to the Zerlane server at 127.0.0.1:") != std::string::npos,
             loop->transportError().c_str());

    // From now on everything throws the same at once, on the context and on its handles.
    timer.restart();
    const auto lost = [](const QString& message) { return message.contains("was lost"); };
    QVERIFY(lost(messageOf<TransportException>([&] { context.run(); })));
    QVERIFY(lost(messageOf<TransportException>([&] { context.getDevices(); })));
    QVERIFY(lost(messageOf<TransportException>([&] { context.registerNode(depth); })));
    QVERIFY(lost(messageOf<TransportException>([&] { context.requestControl(device); })));
    QVERIFY(lost(messageOf<TransportException>([&] { context.startNodes(); })));
    QVERIFY(lost(messageOf<TransportException>([&] { device.getSerialNumber(); })));
    QVERIFY(lost(messageOf<TransportException>([&] { device.getOverheating(); })));
    QVERIFY(lost(messageOf<TransportException>([&] { depth.getConfigurations(); })));
    QVERIFY(lost(messageOf<TransportException>([&] { Property<bool>::getValue(Interface(depth), "enableDepthMap"); })));
    QVERIFY(timer.elapsed() < 500);
    context.quit(); // never throws
    QVERIFY(lost(messageOf<TransportException>([&] { context.stopNodes(); })));
}

void TestSdkServer::badClientsAreCutOffAlone()
{
    Control::setStepped(true);
    Server::Options options;
    options.limits.handshakeTimeout = std::chrono::milliseconds(300);
    options.limits.maxUnreadMessageBytes = 64 * 1024;
    PrivateServer server(options);
    LogCapture log;
    Context good = server.connect();
    const Device device = good.getDevices()[0];
    good.requestControl(device);
    const auto stillServed = [&] {
        return good.getDevices().size() == 1 && Property<int32_t>::getValue(Interface(device), "fanSpeed") > 0
            && good.hasControl(device);
    };

    {
        RawClient raw(server.port());
        raw.hello();
        QVERIFY(raw.send(RawClient::length(wire::WireLimits::MAX_ENVELOPE_BYTES + 1)));
        QVERIFY(raw.closedByServerWithin(2000));
        QTRY_COMPARE(log.matching("message of 1048577 bytes is above the limit").size(), std::size_t(1));
    }
    {
        RawClient raw(server.port()); // a length above the limit before any hello
        QVERIFY(raw.send(RawClient::length(0xffffffffu)));
        QVERIFY(raw.closedByServerWithin(2000));
        QTRY_COMPARE(log.matching("4294967295 bytes is above the limit").size(), std::size_t(1));
        QCOMPARE(log.matching("closing the connection of 127.0.0.1:").size(), std::size_t(1)); // never admitted
    }
    {
        RawClient raw(server.port()); // truncated: the connection ends inside a message
        raw.hello();
        const std::string request = RawClient::request(wire::OP_GET_PROPERTY, 1);
        QVERIFY(raw.send(request.substr(0, request.size() - 3)));
        ::shutdown(raw.fd(), SHUT_WR);
        QVERIFY(raw.closedByServerWithin(2000));
        QTRY_COMPARE(log.matching("raw (PID=4242)").size(), std::size_t(4)); // two admitted clients, in and out
    }
    {
        RawClient raw(server.port()); // a message of a type that does not exist
        raw.hello();
        QVERIFY(raw.send(RawClient::length(2) + std::string("\x78\x01", 2))); // field 15, varint 1
        QVERIFY(raw.closedByServerWithin(2000));
        QTRY_COMPARE(log.matching("message of unknown type").size(), std::size_t(1));
        RawClient notRequest(server.port()); // a well-formed message a client must not send
        notRequest.hello();
        wire::Envelope welcome;
        welcome.mutable_welcome()->set_version(1);
        QVERIFY(notRequest.send(RawClient::frame(welcome)));
        QVERIFY(notRequest.closedByServerWithin(2000));
        QTRY_COMPARE(log.matching("not a request").size(), std::size_t(1));
    }
    {
        QElapsedTimer timer;
        timer.start();
        RawClient silent(server.port()); // connects and says nothing
        QVERIFY(silent.closedByServerWithin(3000));
        QVERIFY(timer.elapsed() >= 250);
        QTRY_COMPARE(log.matching("nothing received in time").size(), std::size_t(1));
        RawClient stranger(server.port()); // speaks something else
        QVERIFY(stranger.send("GET / HTTP/1.0\r\n\r\n"));
        QVERIFY(stranger.closedByServerWithin(3000));
    }
    {
        // Floods requests and never reads a reply.
        RawClient flood(server.port(), 4096);
        flood.hello();
        std::string burst;
        for (int i = 0; i < 2000; ++i)
            burst += RawClient::request(wire::OP_GET_OVERHEATING, 1, i);
        bool cut = false;
        for (int i = 0; i < 400 && !cut; ++i)
            cut = !flood.send(burst);
        QVERIFY(cut || flood.closedByServerWithin(3000));
        QTRY_COMPARE(log.matching("leaves its replies and notices unread").size(), std::size_t(1));
    }
    {
        // Killed in the middle of a sample: it streams the depth node, reads a little and dies.
        const uint32_t depthNode = [&] {
            RawClient probe(server.port());
            return nodeId(probe.hello(), NodeKind::Depth);
        }();
        RawClient victim(server.port(), 4096);
        victim.hello();
        QVERIFY(victim.send(RawClient::request(wire::OP_START, depthNode)));
        QTRY_COMPARE(server.server().host().streamCount(depthNode), std::size_t(1));
        Control::step(3);
        char some[100];
        QVERIFY(::recv(victim.fd(), some, sizeof some, 0) > 0);
        victim.kill();
        Control::step(3);
        QTRY_COMPARE(server.server().host().streamCount(depthNode), std::size_t(0));
    }
    QTRY_COMPARE(server.server().clientCount(), std::size_t(1));
    QVERIFY(stillServed());
}

void TestSdkServer::clientLimitAndProtocolVersion()
{
    Server::Options options;
    options.maxClients = 2;
    PrivateServer server(options);
    Context first = server.connect();
    Context second = server.connect();
    const QString refused = messageOf<TransportException>([&] { server.connect(); });
    QVERIFY2(refused.contains("refused the connection: the server already serves 2 clients, its limit"), qPrintable(refused));
    second = Context();
    QTRY_COMPARE(server.server().clientCount(), std::size_t(1));
    Context third = server.connect();
    QCOMPARE(third.getDevices().size(), std::size_t(1));
    third = Context();
    QTRY_COMPARE(server.server().clientCount(), std::size_t(1));

    RawClient future(server.port());
    const wire::Welcome answer = future.hello(wire::WireLimits::VERSION + 1);
    QVERIFY(QString::fromStdString(answer.refusal()).contains("protocol version"));
    QVERIFY(future.closedByServerWithin(2000));
}

QTEST_GUILESS_MAIN(TestSdkServer)
#include "tst_sdkserver.moc"
