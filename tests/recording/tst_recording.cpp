// Recording and playback: the real capture decoded against its raw files, a recorded simulated camera
// played back sample for sample, and damaged or vanishing files.
#include "RecordingReader.h"
#include "RecordingText.h"

#include "Zerlane/Recorder.h"
#include "Zerlane/Zerlane.h"
#include "Zerlane/sim/SimulatorControl.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <map>
#include <mutex>
#include <thread>

using namespace Zerlane;
using Zerlane::Sim::Control;
using recording::RecordingReader;

namespace {

const QString CaptureDir = QStringLiteral(ZERLANE_CAPTURE_DIR);

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// FNV-1a over the bytes of every map of a sample, each preceded by its size.
class SampleHash {
public:
    template <class T>
    void add(const Pointer<T>& map)
    {
        const uint64_t bytes = map.data() ? uint64_t(map.size()) * sizeof(T) : 0;
        mix(&bytes, sizeof bytes);
        if (map.data())
            mix(map.data(), size_t(bytes));
    }
    void mix(const void* data, size_t size)
    {
        const auto* p = static_cast<const uint8_t*>(data);
        for (size_t i = 0; i < size; ++i)
            m_value = (m_value ^ p[i]) * 1099511628211ull;
    }
    uint64_t value() const { return m_value; }

    static uint64_t of(const DepthNode::NewSampleReceivedData& s)
    {
        SampleHash h;
        h.add(s.phaseMap), h.add(s.confidenceMap), h.add(s.depthMap), h.add(s.depthMapFloatingPoint);
        h.add(s.vertices), h.add(s.verticesFloatingPoint), h.add(s.uvMap);
        h.mix(&s.acceleration, sizeof s.acceleration);
        h.mix(&s.captureConfiguration, sizeof s.captureConfiguration);
        return h.value();
    }
    static uint64_t of(const ColorNode::NewSampleReceivedData& s)
    {
        SampleHash h;
        h.add(s.colorMap);
        return h.value();
    }
    static uint64_t of(const AudioNode::NewSampleReceivedData& s)
    {
        SampleHash h;
        h.add(s.audioData);
        return h.value();
    }

private:
    uint64_t m_value = 14695981039346656037ull;
};

// What a node delivered: per sample its hash and capture time.
struct Delivered {
    std::mutex mutex;
    std::map<std::string, std::vector<std::pair<uint64_t, uint64_t>>> byNode; // node kind name -> (hash, time)

    void add(const std::string& node, uint64_t hash, uint64_t time)
    {
        std::lock_guard<std::mutex> lock(mutex);
        byNode[node].push_back({hash, time});
    }
    size_t count(const std::string& node)
    {
        std::lock_guard<std::mutex> lock(mutex);
        return byNode[node].size();
    }
};

// Listens to every depth, colour and audio node of a device.
class Listener {
public:
    Listener(const Device& device, Delivered* delivered)
        : m_depth([delivered](DepthNode, DepthNode::NewSampleReceivedData s) {
              delivered->add("depth", SampleHash::of(s), s.timeOfCapture);
          }),
          m_color([delivered](ColorNode, ColorNode::NewSampleReceivedData s) {
              delivered->add("color", SampleHash::of(s), s.timeOfCapture);
          }),
          m_audio([delivered](AudioNode, AudioNode::NewSampleReceivedData s) {
              delivered->add("audio", SampleHash::of(s), s.timeOfCapture);
          })
    {
        for (const Node& node : device.getNodes()) {
            if (node.is<DepthNode>())
                node.as<DepthNode>().newSampleReceivedEvent().connect(&m_depth);
            else if (node.is<ColorNode>())
                node.as<ColorNode>().newSampleReceivedEvent().connect(&m_color);
            else if (node.is<AudioNode>())
                node.as<AudioNode>().newSampleReceivedEvent().connect(&m_audio);
            else
                continue;
            m_nodes.push_back(node);
        }
    }
    ~Listener()
    {
        for (const Node& node : m_nodes) {
            if (node.is<DepthNode>())
                node.as<DepthNode>().newSampleReceivedEvent().disconnect(&m_depth);
            else if (node.is<ColorNode>())
                node.as<ColorNode>().newSampleReceivedEvent().disconnect(&m_color);
            else
                node.as<AudioNode>().newSampleReceivedEvent().disconnect(&m_audio);
        }
    }
    const std::vector<Node>& nodes() const { return m_nodes; }

private:
    FunctionHandler<DepthNode, DepthNode::NewSampleReceivedData> m_depth;
    FunctionHandler<ColorNode, ColorNode::NewSampleReceivedData> m_color;
    FunctionHandler<AudioNode, AudioNode::NewSampleReceivedData> m_audio;
    std::vector<Node> m_nodes;
};

class RunningContext {
public:
    explicit RunningContext(Context context) : context(std::move(context))
    {
        m_thread = std::thread([this] {
            try {
                this->context.run();
            } catch (const Exception&) {
            }
        });
    }
    ~RunningContext()
    {
        context.quit();
        m_thread.join();
    }
    Context context;

private:
    std::thread m_thread;
};

void enableEveryMap(const Node& node)
{
    const Interface iface(node);
    for (const PropertyBase& property : node.getType().getProperties())
        if (property.name().rfind("enable", 0) == 0 && property.type() == PropertyType::Bool)
            property.setValue(iface, PropertyValue(true));
}

bool waitFor(const std::function<bool()>& condition, int ms = 20000)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > ms)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

// Collects the library's log lines while it lives.
class LogLines {
public:
    LogLines() : m_logger(Utils::HMLogger::instance())
    {
        m_id = m_logger->addListener([this](Utils::HMLogger::Level, const std::string& text) {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_lines.push_back(text);
        });
    }
    ~LogLines()
    {
        m_logger->removeListener(m_id);
        m_logger->release();
    }
    bool contains(const std::string& a, const std::string& b = {})
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (const std::string& line : m_lines)
            if (line.find(a) != std::string::npos && line.find(b) != std::string::npos)
                return true;
        return false;
    }

private:
    Utils::HMLogger* m_logger;
    int m_id = 0;
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

} // namespace

class TestRecording : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_small; // a short recording of the stepped simulated camera, made once

    // Records `steps` stepped samples of every node of the simulated camera (QVGA depth, every map).
    void recordSimulated(const QString& file, int steps, Delivered& delivered)
    {
        Control::reset();
        Control::setStepped(true);
        RunningContext running(Context::createStandalone());
        Context& context = running.context;
        const Device device = context.getDevices().at(0);
        context.requestControl(device);
        for (const Node& node : device.getNodes()) {
            if (node.is<UnsupportedNode>())
                continue;
            enableEveryMap(node);
            context.registerNode(node);
            if (node.is<DepthNode>())
                node.as<DepthNode>().setConfiguration({FRAME_FORMAT_QVGA, 30, CAMERA_MODE_CLOSE_RANGE, false});
        }
        Listener listener(device, &delivered);
        Recorder recorder(file.toStdString(), {device});
        recorder.start();
        context.startNodes();
        for (int i = 0; i < steps; ++i) {
            Control::step(1);
            // One sample of each node at a time: the library's queue holds at most two per node.
            waitFor([&] { return delivered.count("depth") == size_t(i + 1) && delivered.count("audio") == size_t(i + 1); });
        }
        waitFor([&] { return recorder.progress().samples == uint64_t(3 * steps); });
        context.stopNodes();
        recorder.stop();
        const Recorder::Progress progress = recorder.progress();
        if (progress.samples != uint64_t(3 * steps) || progress.dropped || progress.refused)
            qWarning("recorded %llu samples, %llu dropped, %llu refused", (unsigned long long)progress.samples,
                     (unsigned long long)progress.dropped, (unsigned long long)progress.refused);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_small = m_dir.filePath("small.mkv");
        Delivered delivered;
        recordSimulated(m_small, 3, delivered);
        QVERIFY(QFile::exists(m_small));
    }

    void cleanupTestCase()
    {
        qunsetenv("ZERLANE_PLAYBACK");
        Control::reset();
    }

    // The real capture: depth in millimetres and active brightness equal the raw files over the 640 x 480
    // cut (rows 48..527), the colour decodes like an independent JPEG decoder, the geometry is consistent.
    void realCaptureDecodesAsItsRawFiles()
    {
        const QByteArray depthRaw = readFile(CaptureDir + "/depth_640x576_u16le.raw");
        const QByteArray irRaw = readFile(CaptureDir + "/ir_640x576_u16le.raw");
        if (depthRaw.size() != 640 * 576 * 2)
            QSKIP("the real capture is not beside the project (../shared/data)");
        RecordingReader reader((CaptureDir + "/recording.mkv").toStdString());
        QCOMPARE(reader.devices().size(), size_t(1));
        const recording::RecordedDevice& device = reader.devices()[0];
        QCOMPARE(device.serial, std::string("001514394512"));
        QCOMPARE(device.nodes.size(), size_t(2));
        QVERIFY(reader.warnings().empty()); // the IMU track is known and left out

        RecordingReader::Sample depth, color, sample;
        int samples = 0;
        while (reader.next(sample)) {
            ++samples;
            (sample.kind == NodeKind::Depth ? depth : color) = std::move(sample);
            sample = {};
        }
        QCOMPARE(samples, 2);
        QCOMPARE(depth.timeOfCapture, uint64_t(463945));
        QCOMPARE(depth.depth.captureConfiguration.frameFormat, FRAME_FORMAT_VGA);
        QCOMPARE(depth.depth.captureConfiguration.frameRate, 5);
        QCOMPARE(depth.depth.depthMap.size(), 640 * 480);
        const auto* fullDepth = reinterpret_cast<const uint16_t*>(depthRaw.constData());
        const auto* fullIr = reinterpret_cast<const uint16_t*>(irRaw.constData());
        int mismatches = 0;
        for (int y = 0; y < 480; ++y)
            for (int x = 0; x < 640; ++x) {
                const size_t i = size_t(y) * 640 + x, full = size_t(y + 48) * 640 + x;
                mismatches += uint16_t(depth.depth.depthMap[i]) != fullDepth[full];
                mismatches += uint16_t(depth.depth.confidenceMap[i]) != fullIr[full];
            }
        QCOMPARE(mismatches, 0);
        // The documented pixel: (320, 288) of the capture is (320, 240) here.
        const uint16_t documented = fullDepth[288 * 640 + 320];
        QVERIFY(documented > 0);
        QCOMPARE(uint16_t(depth.depth.depthMap[240 * 640 + 320]), documented);
        QCOMPARE(depth.depth.depthMapFloatingPoint[240 * 640 + 320], float(documented) / 1000.f);

        // Vertices: z is the depth, x and y grow to the right and down; zero depth gives no vertex.
        const Vertex centre = depth.depth.vertices[240 * 640 + 320];
        QCOMPARE(int(centre.z), int(documented));
        int valid = 0, uvInside = 0;
        for (int i = 0; i < 640 * 480; ++i) {
            const Vertex v = depth.depth.vertices[i];
            if (depth.depth.depthMap[i] == 0) {
                QVERIFY(v.x == 0 && v.y == 0 && v.z == 0);
                continue;
            }
            ++valid;
            const FPVertex f = depth.depth.verticesFloatingPoint[i];
            QVERIFY(std::abs(f.x * 1000 - v.x) <= 1 && std::abs(f.y * 1000 - v.y) <= 1);
            const UV uv = depth.depth.uvMap[i];
            uvInside += uv.u >= 0 && uv.u <= 1 && uv.v >= 0 && uv.v <= 1;
        }
        const Vertex left = depth.depth.vertices[240 * 640 + 100], top = depth.depth.vertices[40 * 640 + 320];
        if (left.z)
            QVERIFY(left.x < 0);
        if (top.z)
            QVERIFY(top.y < 0);
        QVERIFY2(uvInside > valid * 9 / 10, "most of the depth image lies inside the colour camera's view");

        // Colour: decoded to B, G, R at 1280 x 720, close to what Qt's own JPEG decoder makes of it.
        QCOMPARE(color.color.captureConfiguration.frameFormat, FRAME_FORMAT_HD720);
        QCOMPARE(color.color.captureConfiguration.compression, COMPRESSION_TYPE_NONE);
        QCOMPARE(color.color.colorMap.size(), 1280 * 720 * 3);
        QImage jpeg(CaptureDir + "/color_1280x720.jpg");
        QVERIFY(!jpeg.isNull());
        jpeg = jpeg.convertToFormat(QImage::Format_RGB888);
        double difference = 0;
        for (int y = 0; y < 720; y += 7)
            for (int x = 0; x < 1280; x += 5) {
                const uint8_t* bgr = color.color.colorMap.data() + (size_t(y) * 1280 + x) * 3;
                const uchar* rgb = jpeg.constScanLine(y) + x * 3;
                difference += std::abs(bgr[0] - rgb[2]) + std::abs(bgr[1] - rgb[1]) + std::abs(bgr[2] - rgb[0]);
            }
        difference /= (720 / 7 + 1) * (1280 / 5) * 3;
        QVERIFY2(difference < 4, qPrintable(QString("mean difference %1").arg(difference)));
    }

    // A recorded simulated camera plays back as the same camera, every sample's maps, acceleration and
    // configuration equal, capture times equal relative to the first, in order; it starts over at the end.
    void recordedSimulatedCameraPlaysBackExactly()
    {
        const QString file = m_dir.filePath("round-trip.mkv");
        const int steps = 40;
        Delivered recorded;
        recordSimulated(file, steps, recorded);
        QCOMPARE(recorded.count("depth"), size_t(steps));

        // The file itself holds every sample with its exact time.
        {
            RecordingReader reader(file.toStdString());
            std::map<std::string, std::vector<std::pair<uint64_t, uint64_t>>> read;
            RecordingReader::Sample s;
            while (reader.next(s)) {
                if (s.kind == NodeKind::Depth)
                    read["depth"].push_back({SampleHash::of(s.depth), s.timeOfCapture});
                else if (s.kind == NodeKind::Color)
                    read["color"].push_back({SampleHash::of(s.color), s.timeOfCapture});
                else
                    read["audio"].push_back({SampleHash::of(s.audio), s.timeOfCapture});
                s = {};
            }
            for (const char* node : {"depth", "color", "audio"})
                QVERIFY2(read[node] == recorded.byNode[node], node);
        }

        // Played back by the plug-in, as a camera of its own.
        Control::reset();
        for (const std::string& serial : Control::cameras())
            Control::removeCamera(serial);
        qputenv("ZERLANE_PLAYBACK", file.toUtf8());
        Delivered played;
        {
            RunningContext running(Context::createStandalone());
            const std::vector<Device> devices = running.context.getDevices();
            QCOMPARE(devices.size(), size_t(1));
            QCOMPARE(devices[0].getSerialNumber(), std::string("ZS0001"));
            QCOMPARE(devices[0].getModel(), Device::MODEL_ZT_SIM);
            Listener listener(devices[0], &played);
            for (const Node& node : listener.nodes())
                running.context.registerNode(node);
            const DepthNode depth = listener.nodes().front().as<DepthNode>();
            QCOMPARE(depth.getConfiguration().frameFormat, FRAME_FORMAT_QVGA);
            QCOMPARE(depth.getConfigurations().size(), size_t(1));
            QVERIFY(Property<bool>::getValue(Interface(depth), "enableUvMap"));
            running.context.startNodes();
            // The second pass shows it loops.
            QVERIFY(waitFor([&] { return played.count("depth") >= size_t(steps + 2); }));
            running.context.stopNodes();
        }
        qunsetenv("ZERLANE_PLAYBACK");
        for (const char* node : {"depth", "color", "audio"}) {
            const auto& want = recorded.byNode[node];
            auto got = played.byNode[node];
            QVERIFY2(got.size() >= want.size(), node);
            for (size_t i = 0; i < want.size(); ++i) {
                QCOMPARE(got[i].first, want[i].first);
                QCOMPARE(got[i].second - got[0].second, want[i].second - want[0].second);
            }
            if (got.size() > want.size()) { // the next pass starts over with the first sample, later
                QCOMPARE(got[want.size()].first, want[0].first);
                QVERIFY(got[want.size()].second > got[want.size() - 1].second);
            }
        }
    }

    // The description attachment and the sample lines give back every value exactly: strings with spaces,
    // '%', ',' and line breaks, floats to the bit, every configuration type; damaged text is refused.
    void descriptionTextKeepsEveryValue()
    {
        using recording::RecordedDevice;
        using recording::RecordingText;
        auto property = [](const char* name, PropertyValue value, bool readOnly, bool hidden, bool control) {
            RecordedDevice::Property p;
            p.spec = {name, PropertyType(value.index()), readOnly, hidden, control};
            p.value = std::move(value);
            return p;
        };
        RecordedDevice device;
        device.model = 1;
        device.serial = "A 100%, odd\nserial";
        device.typeName = "";
        device.usbBackendVersion = -7;
        device.properties = {property("firmware tag", std::string("x,y %z\n"), false, true, true),
                             property("gain", 0.1f, true, false, false), property("on", true, false, false, true),
                             property("exposure", EXPOSURE_AUTO_APERTURE_PRIORITY, false, false, true)};
        RecordedDevice::Node depth;
        depth.kind = NodeKind::Depth;
        depth.serial = "n 1";
        depth.range = 1.0f / 3.0f;
        depth.configurations = {DepthNodeConfiguration {FRAME_FORMAT_QVGA, 60, CAMERA_MODE_LONG_RANGE, true}};
        depth.configuration = depth.configurations[0];
        depth.properties = {property("count", int32_t(-2147483647 - 1), false, false, true)};
        RecordedDevice::Node audio;
        audio.kind = NodeKind::Audio;
        AudioNodeConfiguration sound;
        sound.audioFormat = {44100, 16, 2};
        audio.configuration = sound;
        device.nodes = {depth, audio};

        const std::vector<RecordedDevice> back = RecordingText::parseDescription(RecordingText::describe({device}));
        QCOMPARE(back.size(), size_t(1));
        QCOMPARE(back[0].serial, device.serial);
        QCOMPARE(back[0].typeName, std::string());
        QCOMPARE(back[0].usbBackendVersion, -7);
        QCOMPARE(back[0].properties.size(), device.properties.size());
        for (size_t i = 0; i < device.properties.size(); ++i) {
            QCOMPARE(back[0].properties[i].spec.name, device.properties[i].spec.name);
            QVERIFY(back[0].properties[i].value == device.properties[i].value);
            QCOMPARE(back[0].properties[i].spec.hidden, device.properties[i].spec.hidden);
            QCOMPARE(back[0].properties[i].spec.requiresControl, device.properties[i].spec.requiresControl);
        }
        QCOMPARE(back[0].nodes.size(), size_t(2));
        QCOMPARE(back[0].nodes[0].range, depth.range);
        QVERIFY(back[0].nodes[0].configuration == depth.configuration);
        QVERIFY(back[0].nodes[0].properties[0].value == depth.properties[0].value);
        QVERIFY(back[0].nodes[1].configuration == audio.configuration);

        RecordingText::SampleLine line;
        line.device = 2;
        line.node = 1;
        line.timeOfCapture = 18446744073709551ull;
        line.maps = 7;
        line.configuration = depth.configuration;
        line.acceleration[1] = -0.98765432f;
        const RecordingText::SampleLine read = RecordingText::parseSampleLine(RecordingText::sampleLine(line));
        QCOMPARE(read.timeOfCapture, line.timeOfCapture);
        QCOMPARE(read.acceleration[1], line.acceleration[1]);
        QVERIFY(read.configuration == line.configuration);

        for (const char* damaged : {"", "zerlane-recording 1\nnode 1 0 0 0 0 0x1p+0 'a 'b\n",
                                    "zerlane-recording 1\ndevice 1 0 0 'a 'b\nnode 9 0 0 0 0 0x1p+0 'a 'b\n",
                                    "zerlane-recording 1\ndevice 1 0 0 'a 'b\nnode 1 0 0 0 0 0x1p+0 'a 'b\n",
                                    "zerlane-recording 1\ndevice 1 0 0 'a 'b\ndprop 0 0 'x 1 extra\n",
                                    "zerlane-recording 1\ndevice 1 0 0 'a%4 'b\n"}) {
            bool refused = false;
            try {
                RecordingText::parseDescription(damaged);
            } catch (const Exception&) {
                refused = true;
            }
            QVERIFY2(refused, damaged);
        }
    }

    // Other tools read our files: ffprobe reports no error and sees the depth-camera track layout.
    void ffprobeOpensOurRecordings()
    {
        QProcess probe;
        probe.start("ffprobe", {"-v", "error", "-show_entries", "stream=codec_tag_string:stream_tags=title", "-of",
                                "csv=p=0", m_small});
        if (!probe.waitForStarted())
            QSKIP("ffprobe is not installed");
        QVERIFY(probe.waitForFinished(30000));
        QCOMPARE(probe.exitCode(), 0);
        QCOMPARE(QString::fromUtf8(probe.readAllStandardError()), QString());
        const QString streams = QString::fromUtf8(probe.readAllStandardOutput());
        QVERIFY2(streams.contains("b16g,DEPTH") && streams.contains("b16g,IR"), qPrintable(streams));
        QVERIFY2(streams.contains("ZERLANE_SAMPLES") && streams.contains("AUDIO"), qPrintable(streams));
    }

    // zerlane-server --play serves a recording as a camera to its clients, beside the simulated one.
    void serverPlaysRecordingsToItsClients()
    {
        const QString serial = QString::fromStdString(RecordingReader(m_small.toStdString()).devices().at(0).serial);
        QProcess server;
        server.setProcessChannelMode(QProcess::MergedChannels);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("ZERLANE_PLAYBACK");
        server.setProcessEnvironment(environment);
        // A port of its own, away from the default one and from the other suites' ephemeral ports.
        const uint16_t port = uint16_t(20000 + QCoreApplication::applicationPid() % 20000);
        server.start(ZERLANE_SERVER_PATH, {"--port", QString::number(port), "--play", m_small});
        QVERIFY(server.waitForStarted());
        QString log;
        QVERIFY(QTest::qWaitFor([&] {
            server.waitForReadyRead(50);
            log += QString::fromUtf8(server.readAll());
            return log.contains("listening on");
        }, 10000));
        {
            Context context = Context::create("127.0.0.1", port);
            QStringList serials;
            for (const Device& device : context.getDevices())
                serials << QString::fromStdString(device.getSerialNumber());
            QVERIFY2(serials.contains(serial) && serials.size() == 2, qPrintable(serials.join(' ') + "\n" + log));
        }
        server.terminate();
        QVERIFY(server.waitForFinished(5000));
        QCOMPARE(server.exitCode(), 0);
    }

    // Files that are not recordings, or damaged ones: an exception whose message names the file and says
    // what is wrong; a track of no known layout is skipped with a warning and the rest plays.
    void damagedFilesAreReportedByName()
    {
        const QByteArray good = readFile(m_small);
        QVERIFY(good.size() > 10000);
        auto write = [this](const QString& name, const QByteArray& bytes) {
            const QString path = m_dir.filePath(name);
            QFile file(path);
            file.open(QIODevice::WriteOnly);
            file.write(bytes);
            return path.toStdString();
        };
        auto failure = [](const std::string& path) -> std::string {
            try {
                RecordingReader reader(path);
                RecordingReader::Sample s;
                while (reader.next(s))
                    s = {};
            } catch (const Exception& e) {
                return e.what();
            }
            return {};
        };

        const std::string text = write("notes.mkv", "this is not a recording\n");
        std::string message = failure(text);
        QVERIFY2(message.rfind(text + ": not a Matroska recording", 0) == 0, message.c_str());
        message = failure(m_dir.filePath("missing.mkv").toStdString());
        QVERIFY2(message.find("missing.mkv: cannot open") != std::string::npos, message.c_str());

        // Cut in the header: no camera can be read. Cut in the samples: what was complete plays.
        const std::string header = write("header.mkv", good.left(300));
        message = failure(header);
        QVERIFY2(message.rfind(header + ": ", 0) == 0, message.c_str());
        const std::string tail = write("tail.mkv", good.left(good.size() * 2 / 3));
        QCOMPARE(failure(tail), std::string());
        {
            RecordingReader reader(tail);
            RecordingReader::Sample s;
            int samples = 0, whole = 0;
            while (reader.next(s)) {
                ++samples;
                whole += s.kind != NodeKind::Depth || s.depth.uvMap.data();
                s = {};
            }
            QVERIFY(samples >= 3 && samples < 9);
            QVERIFY(whole >= 2);
        }

        // A track of no known layout (the phase track renamed; same length, no checksums in our files):
        // skipped with a warning, the samples play without that map.
        QByteArray unknown = good;
        const int title = unknown.indexOf("ZERLANE_PHASE");
        QVERIFY(title > 0);
        unknown.replace(title, 13, "ZERLANE_PHASX");
        const std::string unknownPath = write("unknown.mkv", unknown);
        {
            RecordingReader reader(unknownPath);
            QCOMPARE(reader.warnings().size(), size_t(1));
            QVERIFY(reader.warnings()[0].find("'ZERLANE_PHASX' is not part of the recording layout") != std::string::npos);
            RecordingReader::Sample s;
            int depthSamples = 0;
            while (reader.next(s)) {
                if (s.kind == NodeKind::Depth) {
                    ++depthSamples;
                    QVERIFY(!s.depth.phaseMap.data());
                    QCOMPARE(s.depth.depthMap.size(), 320 * 240);
                    QCOMPARE(s.depth.uvMap.size(), 320 * 240);
                }
                s = {};
            }
            QCOMPARE(depthSamples, 3);
        }

        // The description says VGA while the tracks hold QVGA frames.
        QByteArray wrongSize = good;
        const int current = wrongSize.indexOf("current 2,30,0,0");
        QVERIFY(current > 0);
        wrongSize[current + 8] = '3';
        const std::string wrongPath = write("wrong-size.mkv", wrongSize);
        message = failure(wrongPath);
        QVERIFY2(message.find(wrongPath + ": track 'DEPTH'") == 0 && message.find("320 x 240") != std::string::npos,
                 message.c_str());

        // Every byte flipped in turn in a stretch of the header, and many cuts: never a crash.
        for (int i = 0; i < 2000; i += 3) {
            QByteArray damaged = good.left(20000);
            damaged[i] = char(damaged[i] ^ 0x5a);
            failure(write("flipped.mkv", damaged));
        }
    }

    // Playback devices beside the simulated camera: a file that cannot be opened is logged by name and left
    // out; a file deleted while it plays ends that camera's samples with a message, and the simulated camera
    // keeps streaming.
    void vanishingFilesLeaveOtherCamerasAlone()
    {
        LogLines log;
        const QString copy = m_dir.filePath("vanishing.mkv");
        QFile::remove(copy);
        QVERIFY(QFile::copy(m_small, copy));
        const QString bad = m_dir.filePath("bad.mkv");
        {
            QFile file(bad);
            file.open(QIODevice::WriteOnly);
            file.write("nothing");
        }
        Control::reset();
        Control::setStepped(false);
        qputenv("ZERLANE_PLAYBACK", (copy + ":" + bad).toUtf8());
        Delivered simulated, played;
        {
            RunningContext running(Context::createStandalone());
            qunsetenv("ZERLANE_PLAYBACK");
            const std::vector<Device> devices = running.context.getDevices();
            QCOMPARE(devices.size(), size_t(2)); // the simulated camera and the recording
            QVERIFY(log.contains("bad.mkv: not a Matroska recording"));
            Listener sim(devices[0], &simulated), recording(devices[1], &played);
            for (const Device& device : devices)
                for (const Node& node : device.getNodes())
                    if (!node.is<UnsupportedNode>()) {
                        enableEveryMap(node);
                        running.context.registerNode(node);
                    }
            running.context.startNodes();
            QVERIFY(waitFor([&] { return played.count("depth") >= 3; }));
            QVERIFY(QFile::remove(copy));
            QVERIFY(waitFor([&] { return log.contains("vanishing.mkv: cannot open the recording"); }));
            const size_t before = simulated.count("depth");
            QVERIFY(waitFor([&] { return simulated.count("depth") > before + 5; }));
            running.context.stopNodes();
        }
        Control::setStepped(true);
    }
};

QTEST_MAIN(TestRecording)
#include "tst_recording.moc"
