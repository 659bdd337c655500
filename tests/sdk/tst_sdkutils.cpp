// Utilities of the camera library, plug-in loading failure, and the client side of server mode.

#include "Zerlane/Zerlane.h"
#include "Zerlane/plugin/FaultInjector.h"

#include "SdkTestSupport.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <thread>

using namespace Zerlane;
using Zerlane::plugin::FaultInjector;
using SdkTestSupport::messageOf;

namespace {

// A listening socket on a free port of 127.0.0.1, closed on destruction.
class Listener {
public:
    Listener()
    {
        m_fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
        ::listen(m_fd, 4);
        socklen_t length = sizeof address;
        ::getsockname(m_fd, reinterpret_cast<sockaddr*>(&address), &length);
        m_port = ntohs(address.sin_port);
    }
    ~Listener() { ::close(m_fd); }
    uint16_t port() const { return m_port; }

private:
    int m_fd = -1;
    uint16_t m_port = 0;
};


} // namespace

class TestSdkUtils : public QObject {
    Q_OBJECT

private slots:
    void pluginLoadFailureIsClear();
    void format();
    void format_data();
    void environmentInteger();
    void loggerLinesAndListeners();
    void enumNames();
    void clockIsMonotonicMicroseconds();
    void faultInjectorCountsAndKinds();
    void serverUnreachable();
    void serverReachableButNotSpoken();
    void unsetHandles();
};

// Runs first: the plug-in library is loaded at most once per process.
void TestSdkUtils::pluginLoadFailureIsClear()
{
    qputenv("ZERLANE_PLUGIN_PATH", "/nonexistent/plugins");
    const QString message = messageOf<Exception>([] { Context::createStandalone(); });
    qunsetenv("ZERLANE_PLUGIN_PATH");
    QVERIFY2(message.startsWith("could not load device plug-ins from /nonexistent/plugins/libZerlanePlugins.so.1: "),
             qPrintable(message));
}

void TestSdkUtils::format_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QString>("expected");
    QTest::newRow("in turn") << "Could not get property %: %" << QStringList {"gain", "busy"}
                             << "Could not get property gain: busy";
    QTest::newRow("literal percent") << "%% of % at 100%%" << QStringList {"half"} << "% of half at 100%";
    QTest::newRow("missing value stays") << "a % b %" << QStringList {"1"} << "a 1 b %";
    QTest::newRow("extra values dropped") << "only %" << QStringList {"x", "y"} << "only x";
    QTest::newRow("value with percent is not reparsed") << "% and %" << QStringList {"50%", "%%"} << "50% and %%";
    QTest::newRow("no values") << "100%% sure, % left" << QStringList {} << "100% sure, % left";
}

void TestSdkUtils::format()
{
    QFETCH(QString, text);
    QFETCH(QStringList, values);
    QFETCH(QString, expected);
    Utils::Format format(text.toStdString());
    for (const QString& value : values)
        format % value.toStdString();
    QCOMPARE(QString::fromStdString(format.str()), expected);
    QCOMPARE(QString::fromStdString(format.str()), expected); // str() does not change the state

    const std::string numbers = Utils::Format("% fps, % m") % 30 % 1.5;
    QCOMPARE(numbers, std::string("30 fps, 1.5 m"));
}

void TestSdkUtils::environmentInteger()
{
    const char* name = "ZERLANE_TEST_INT";
    const Utils::EnvironmentVariable variable(name);
    qunsetenv(name);
    QVERIFY(!variable.isSet());
    QCOMPARE(variable.getIntValue(7), 7);
    QCOMPARE(variable.getValue("dflt"), std::string("dflt"));

    const struct {
        const char* text;
        int expected;
    } cases[] = {{"42", 42}, {"-13", -13}, {"+5", 5}, {"", 7}, {" 42", 7}, {"42 ", 7}, {"4x2", 7}, {"0x10", 7},
                 {"99999999999", 7}, {"-", 7}, {"3.5", 7}};
    for (const auto& c : cases) {
        qputenv(name, c.text);
        QVERIFY(variable.isSet());
        QVERIFY2(variable.getIntValue(7) == c.expected, c.text);
    }
    qunsetenv(name);
}

void TestSdkUtils::loggerLinesAndListeners()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("zerlane.log");
    qputenv("ZERLANE_LOG_FILE", path.toLocal8Bit());
    Utils::HMLogger* logger = Utils::HMLogger::instance(); // first reference: reads the environment
    Utils::HMLogger* again = Utils::HMLogger::instance();
    QCOMPARE(again, logger);
    logger->setEchoToStderr(false);

    std::vector<std::pair<Utils::HMLogger::Level, std::string>> heard;
    std::mutex heardMutex;
    const int id = logger->addListener([&](Utils::HMLogger::Level level, const std::string& text) {
        std::lock_guard<std::mutex> lock(heardMutex);
        heard.emplace_back(level, text);
    });
    logger->warning("disk 90% full");
    logger->info("hello");
    std::vector<std::thread> writers;
    for (int t = 0; t < 4; ++t)
        writers.emplace_back([logger, t] {
            for (int i = 0; i < 50; ++i)
                logger->error("writer " + std::to_string(t));
        });
    for (std::thread& writer : writers)
        writer.join();
    logger->removeListener(id);
    logger->info("not heard");

    QCOMPARE(heard.size(), std::size_t(202));
    QCOMPARE(heard[0].first, Utils::HMLogger::Warning);
    QCOMPARE(heard[0].second, std::string("disk 90% full"));

    std::ifstream file(path.toStdString());
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    QCOMPARE(lines.size(), std::size_t(203)); // whole lines only, even from four threads at once
    const QRegularExpression shape(R"(^\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}\] WARNING: disk 90% full$)");
    QVERIFY2(shape.match(QString::fromStdString(lines[0])).hasMatch(), lines[0].c_str());
    QVERIFY(QString::fromStdString(lines[1]).endsWith("] INFO: hello"));
    for (std::size_t i = 2; i < 202; ++i)
        QVERIFY2(QString::fromStdString(lines[i]).contains("] ERROR: writer "), lines[i].c_str());

    logger->setEchoToStderr(true);
    again->release();
    logger->release();
    qunsetenv("ZERLANE_LOG_FILE");
}

void TestSdkUtils::enumNames()
{
    int32_t w = -1, h = -1;
    const struct {
        FrameFormat format;
        int32_t width, height;
        const char* name;
    } formats[] = {{FRAME_FORMAT_QQVGA, 160, 120, "QQVGA"}, {FRAME_FORMAT_QVGA, 320, 240, "QVGA"},
                   {FRAME_FORMAT_VGA, 640, 480, "VGA"},     {FRAME_FORMAT_HD720, 1280, 720, "HD720"},
                   {FRAME_FORMAT_UNKNOWN, 0, 0, "Unknown"}, {static_cast<FrameFormat>(77), 0, 0, "Unknown"}};
    for (const auto& f : formats) {
        FrameFormat_toResolution(f.format, &w, &h);
        QCOMPARE(w, f.width);
        QCOMPARE(h, f.height);
        QCOMPARE(FrameFormat_toString(f.format), std::string(f.name));
    }
    QCOMPARE(CompressionType_toString(COMPRESSION_TYPE_NONE), std::string("Uncompressed"));
    QCOMPARE(PowerLineFrequency_toString(POWER_LINE_FREQUENCY_60HZ), std::string("60Hz"));
    QCOMPARE(ExposureAuto_toString(EXPOSURE_AUTO_APERTURE_PRIORITY), std::string("Aperture Priority"));
    QCOMPARE(DepthNode::CameraMode_toString(CAMERA_MODE_CLOSE_RANGE), std::string("Close range"));
    QCOMPARE(Device::Model_toString(Device::MODEL_ZT_SIM), std::string("ZT-Sim ToF"));
    QCOMPARE(Device::Model_toString(static_cast<Device::Model>(9)), std::string("Unknown"));
    QCOMPARE(PropertyType_toString(PropertyType::DepthConfiguration), std::string("DepthNode::Configuration"));
    QCOMPARE(UnsupportedNode::Reason_toString(UnsupportedNode::REASON_FIRMWARE_UPDATE_REQUIRED),
             std::string("Firmware update required"));
    QCOMPARE(versionBanner(), std::string("ZerlaneSDK 1.4.0.1140 linux64 gcc (Release)"));
    QCOMPARE(versionString(), std::string("1.4.0.1140"));
}

void TestSdkUtils::clockIsMonotonicMicroseconds()
{
    long first = 0;
    Utils::Clock::getTime(first);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const uint64_t later = Utils::Clock::now();
    const uint64_t elapsed = later - static_cast<uint64_t>(first);
    QVERIFY2(elapsed >= 20000 && elapsed < 2000000, qPrintable(QString::number(elapsed)));
}

void TestSdkUtils::faultInjectorCountsAndKinds()
{
    FaultInjector::inject("Context::create", FaultInjector::Kind::Timeout, "slow network", 2);
    QCOMPARE(messageOf<TimeoutException>([] { Context::create("localhost", 1); }), QString("slow network"));
    QCOMPARE(messageOf<TimeoutException>([] { Context::create("localhost", 1); }), QString("slow network"));
    // Used up: the real failure comes through again.
    QVERIFY(messageOf<TransportException>([] { Context::create("localhost", 1); }).startsWith("could not reach"));

    FaultInjector::inject("Context::create", FaultInjector::Kind::Argument, "bad", -1);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(messageOf<ArgumentException>([] { Context::create("localhost", 1); }), QString("bad"));
    FaultInjector::inject("Context::create", FaultInjector::Kind::InvalidOperation, "state", 1);
    QCOMPARE(messageOf<InvalidOperationException>([] { Context::create("localhost", 1); }), QString("state"));
    FaultInjector::inject("Context::create", FaultInjector::Kind::Exception, "plain", 1);
    try {
        Context::create("localhost", 1);
        QFAIL("no exception");
    } catch (const TransportException&) {
        QFAIL("a plain Exception was asked for");
    } catch (const Exception& e) {
        QCOMPARE(std::string(e.what()), std::string("plain"));
    }
    FaultInjector::inject("Context::create", FaultInjector::Kind::Transport, "never", -1);
    FaultInjector::clear();
    QVERIFY(messageOf<TransportException>([] { Context::create("localhost", 1); }).startsWith("could not reach"));
}

void TestSdkUtils::serverUnreachable()
{
    uint16_t port = 0;
    {
        Listener closed; // take a free port, then free it again
        port = closed.port();
    }
    QElapsedTimer timer;
    timer.start();
    const QString message = messageOf<TransportException>([port] { Context::create("localhost", port); });
    QVERIFY(timer.elapsed() < 1000);
    QVERIFY2(message.startsWith(QString("could not reach the Zerlane server at localhost:%1 (").arg(port)),
             qPrintable(message));
    QVERIFY2(message.contains("refused"), qPrintable(message));

    const QString unknownHost = messageOf<TransportException>([] { Context::create("no-such-host.invalid", 6909); });
    QVERIFY2(unknownHost.startsWith("could not reach the Zerlane server at no-such-host.invalid:6909 ("),
             qPrintable(unknownHost));
}

void TestSdkUtils::serverReachableButNotSpoken()
{
    Listener server;
    const QString message = messageOf<TransportException>([&] { Context::create("127.0.0.1", server.port()); });
    // Something listens but never answers the handshake: given up after the connect time-out.
    QCOMPARE(message, QString("connected to 127.0.0.1:%1, but no Zerlane server answered there (nothing received in "
                              "time)").arg(server.port()));
}

void TestSdkUtils::unsetHandles()
{
    Context context;
    QVERIFY(!context.isSet());
    context.quit(); // never throws
    QVERIFY(messageOf<InvalidOperationException>([&] { context.run(); }).contains("not set"));
    QVERIFY(messageOf<InvalidOperationException>([] { Device().getSerialNumber(); }).contains("not set"));
    QVERIFY(messageOf<InvalidOperationException>([] { DepthNode converted {Node()}; }).contains("not set"));
    QVERIFY(!Node().is<DepthNode>());
    QVERIFY(!Type().isSet());
    QVERIFY(!PropertyBase().isSet());
    QCOMPARE(Device(), Device());
    QVERIFY(!(Node() < Node()));
    QVERIFY(!Interface(Device()).isSet());
}

QTEST_GUILESS_MAIN(TestSdkUtils)
#include "tst_sdkutils.moc"
