// zerlane-probe: a command-line look at what the camera library sees.
//   zerlane-probe [--standalone | --port N] --list
//   zerlane-probe [--standalone | --port N] --stream SECONDS
//   zerlane-probe [--standalone | --port N] --record FILE --seconds N

#include "Zerlane/Recorder.h"
#include "Zerlane/Zerlane.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <variant>
#include <vector>

namespace {

const char* const kUsage = "usage: zerlane-probe [--standalone | --port N] --list\n"
                           "       zerlane-probe [--standalone | --port N] --stream SECONDS\n"
                           "       zerlane-probe [--standalone | --port N] --record FILE --seconds N\n";

struct Options {
    bool standalone = false;
    std::optional<uint16_t> port;
    bool list = false;
    std::optional<int> streamSeconds;
    std::string recordFile;
    std::optional<int> recordSeconds;
};

class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

int parseNumber(const std::string& text, int low, int high, const std::string& what)
{
    std::size_t used = 0;
    int value = 0;
    try {
        value = std::stoi(text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used != text.size() || value < low || value > high)
        throw UsageError(what + " must be a number from " + std::to_string(low) + " to " + std::to_string(high));
    return value;
}

Options parseOptions(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const auto next = [&]() -> std::string {
            if (i + 1 >= argc)
                throw UsageError(arg + " needs a value");
            return argv[++i];
        };
        if (arg == "--standalone")
            options.standalone = true;
        else if (arg == "--port")
            options.port = static_cast<uint16_t>(parseNumber(next(), 1, 65535, "the port"));
        else if (arg == "--list")
            options.list = true;
        else if (arg == "--stream")
            options.streamSeconds = parseNumber(next(), 1, 24 * 3600, "the streaming time");
        else if (arg == "--record")
            options.recordFile = next();
        else if (arg == "--seconds")
            options.recordSeconds = parseNumber(next(), 1, 24 * 3600, "the recording time");
        else
            throw UsageError("unknown option " + arg);
    }
    if (options.standalone && options.port)
        throw UsageError("--standalone and --port exclude each other");
    if (options.recordFile.empty() != !options.recordSeconds)
        throw UsageError("--record FILE and --seconds N go together");
    if (int(options.list) + int(options.streamSeconds.has_value()) + int(!options.recordFile.empty()) != 1)
        throw UsageError("give one of --list, --stream SECONDS and --record FILE --seconds N");
    return options;
}

Zerlane::Context openContext(const Options& options)
{
    if (options.standalone)
        return Zerlane::Context::createStandalone();
    if (options.port)
        return Zerlane::Context::create("localhost", *options.port);
    return Zerlane::Context::create();
}

std::string hex(int32_t value)
{
    std::ostringstream text;
    text << "0x" << std::hex << value;
    return text.str();
}

std::string describe(const Zerlane::DepthNodeConfiguration& c)
{
    return Zerlane::FrameFormat_toString(c.frameFormat) + " " + std::to_string(c.frameRate) + " fps "
        + Zerlane::DepthNode::CameraMode_toString(c.mode) + (c.saturation ? ", saturation on" : ", saturation off");
}

std::string describe(const Zerlane::ColorNodeConfiguration& c)
{
    return Zerlane::FrameFormat_toString(c.frameFormat) + " " + Zerlane::CompressionType_toString(c.compression)
        + " " + std::to_string(c.frameRate) + " fps, power line "
        + Zerlane::PowerLineFrequency_toString(c.powerLineFrequency);
}

std::string describe(const Zerlane::AudioNodeConfiguration& c)
{
    return std::to_string(c.audioFormat.sampleRate) + " Hz, " + std::to_string(c.audioFormat.bitsPerSample)
        + " bits, " + std::to_string(c.audioFormat.nbChannels) + " channel(s)";
}

std::string describe(const Zerlane::PropertyValue& value)
{
    struct Visitor {
        std::string operator()(bool v) const { return v ? "true" : "false"; }
        std::string operator()(int32_t v) const { return std::to_string(v); }
        std::string operator()(float v) const
        {
            std::ostringstream text;
            text << v;
            return text.str();
        }
        std::string operator()(const std::string& v) const { return "\"" + v + "\""; }
        std::string operator()(Zerlane::ExposureAuto v) const { return Zerlane::ExposureAuto_toString(v); }
        std::string operator()(const Zerlane::DepthNodeConfiguration& v) const { return describe(v); }
        std::string operator()(const Zerlane::ColorNodeConfiguration& v) const { return describe(v); }
        std::string operator()(const Zerlane::AudioNodeConfiguration& v) const { return describe(v); }
    };
    return std::visit(Visitor {}, value);
}

void printProperties(const Zerlane::Interface& iface, const std::string& indent)
{
    for (const Zerlane::PropertyBase& property : iface.getType().getAllProperties()) {
        std::string value;
        try {
            value = describe(property.getValue(iface, property.type()));
        } catch (const Zerlane::Exception& e) {
            value = std::string("<") + e.what() + ">";
        }
        std::cout << indent << property.name() << " (" << Zerlane::PropertyType_toString(property.type())
                  << (property.isReadOnly() ? ", read-only" : "") << (property.isHidden() ? ", hidden" : "")
                  << ") = " << value << "\n";
    }
}

template <class NodeKind>
void printConfigurations(const NodeKind& node)
{
    const auto current = node.getConfiguration();
    std::cout << "    configurations:\n";
    for (const auto& configuration : node.getConfigurations())
        std::cout << "      " << describe(configuration) << (configuration == current ? "  (current)" : "") << "\n";
}

std::string kindName(Zerlane::NodeKind kind)
{
    switch (kind) {
    case Zerlane::NodeKind::Depth: return "depth";
    case Zerlane::NodeKind::Color: return "color";
    case Zerlane::NodeKind::Audio: return "audio";
    case Zerlane::NodeKind::Unsupported: break;
    }
    return "unsupported";
}

void printNode(const Zerlane::Node& node)
{
    std::cout << "  " << kindName(node.kind()) << " node, type \"" << node.getType().name() << "\"\n"
              << "    serial " << node.getSerialNumber() << ", VID " << hex(node.getVID()) << ", PID "
              << hex(node.getPID()) << ", revision " << node.getRevision() << ", media interface "
              << node.getMediaInterface() << "\n";
    if (node.is<Zerlane::DepthNode>()) {
        printConfigurations(node.as<Zerlane::DepthNode>());
        std::cout << "    range: " << node.as<Zerlane::DepthNode>().getRange() << " m\n";
    } else if (node.is<Zerlane::ColorNode>()) {
        printConfigurations(node.as<Zerlane::ColorNode>());
    } else if (node.is<Zerlane::AudioNode>()) {
        printConfigurations(node.as<Zerlane::AudioNode>());
    } else if (node.is<Zerlane::UnsupportedNode>()) {
        const auto reason = node.as<Zerlane::UnsupportedNode>().getReason();
        std::cout << "    not supported: " << Zerlane::UnsupportedNode::Reason_toString(reason) << "\n";
    }
    std::cout << "    properties:\n";
    printProperties(Zerlane::Interface(node), "      ");
}

void list(Zerlane::Context& context)
{
    const std::vector<Zerlane::Device> devices = context.getDevices();
    std::cout << devices.size() << " device(s)\n";
    for (const Zerlane::Device& device : devices) {
        std::cout << "device " << device.getSerialNumber() << ": " << Zerlane::Device::Model_toString(device.getModel())
                  << ", type \"" << device.getType().name() << "\"\n"
                  << "  USB backend version " << hex(device.getUsbBackendVersion()) << ", TOF controller version "
                  << hex(device.getTofControllerVersion()) << (device.getOverheating() ? ", OVERHEATING" : "")
                  << "\n  properties:\n";
        printProperties(Zerlane::Interface(device), "    ");
        for (const Zerlane::Node& node : device.getNodes())
            printNode(node);
    }
}

// Sample counts of one node, written by run()'s thread and read once a second by the main thread.
struct NodeCounter {
    std::string label;
    std::atomic<long> samples {0};
    std::atomic<long> dropped {0};
    long lastSamples = 0;
    long lastDropped = 0;
};

// The handler objects of one node; they must outlive their connection.
struct NodeTap {
    Zerlane::Node node;
    std::unique_ptr<NodeCounter> counter;
    std::unique_ptr<Zerlane::FunctionHandler<Zerlane::DepthNode, Zerlane::DepthNode::NewSampleReceivedData>> depth;
    std::unique_ptr<Zerlane::FunctionHandler<Zerlane::ColorNode, Zerlane::ColorNode::NewSampleReceivedData>> color;
    std::unique_ptr<Zerlane::FunctionHandler<Zerlane::AudioNode, Zerlane::AudioNode::NewSampleReceivedData>> audio;
};

template <class Data>
auto counting(NodeCounter* counter)
{
    return [counter](auto, Data data) {
        counter->samples.fetch_add(1);
        counter->dropped.fetch_add(data.droppedSampleCount);
    };
}

void enableMaps(const Zerlane::Node& node)
{
    const Zerlane::Interface iface(node);
    for (const Zerlane::PropertyBase& property : node.getType().getProperties()) {
        const std::string name = property.name();
        if (name.rfind("enable", 0) == 0 && property.type() == Zerlane::PropertyType::Bool && !property.isReadOnly(iface))
            property.setValue(iface, Zerlane::PropertyValue(true));
    }
}

NodeTap tap(const Zerlane::Node& node)
{
    NodeTap tap {node, std::make_unique<NodeCounter>(), nullptr, nullptr, nullptr};
    tap.counter->label = kindName(node.kind()) + " node of " + node.getDevice().getSerialNumber();
    NodeCounter* counter = tap.counter.get();
    if (node.is<Zerlane::DepthNode>()) {
        tap.depth = std::make_unique<decltype(tap.depth)::element_type>(
            counting<Zerlane::DepthNode::NewSampleReceivedData>(counter));
        node.as<Zerlane::DepthNode>().newSampleReceivedEvent().connect(tap.depth.get());
    } else if (node.is<Zerlane::ColorNode>()) {
        tap.color = std::make_unique<decltype(tap.color)::element_type>(
            counting<Zerlane::ColorNode::NewSampleReceivedData>(counter));
        node.as<Zerlane::ColorNode>().newSampleReceivedEvent().connect(tap.color.get());
    } else if (node.is<Zerlane::AudioNode>()) {
        tap.audio = std::make_unique<decltype(tap.audio)::element_type>(
            counting<Zerlane::AudioNode::NewSampleReceivedData>(counter));
        node.as<Zerlane::AudioNode>().newSampleReceivedEvent().connect(tap.audio.get());
    }
    return tap;
}

void untap(NodeTap& tap)
{
    if (tap.depth)
        tap.node.as<Zerlane::DepthNode>().newSampleReceivedEvent().disconnect(tap.depth.get());
    if (tap.color)
        tap.node.as<Zerlane::ColorNode>().newSampleReceivedEvent().disconnect(tap.color.get());
    if (tap.audio)
        tap.node.as<Zerlane::AudioNode>().newSampleReceivedEvent().disconnect(tap.audio.get());
}

// Runs the context's event loop on a thread of its own; a lost connection's message lands in `error`.
std::thread runEvents(Zerlane::Context& context, std::string& error)
{
    return std::thread([&context, &error] {
        try {
            context.run();
        } catch (const Zerlane::Exception& e) {
            error = e.what();
        }
    });
}

// Records every node of every device, with a progress line per second.
int record(Zerlane::Context& context, const std::string& file, int seconds)
{
    std::vector<Zerlane::Device> devices = context.getDevices();
    for (const Zerlane::Device& device : devices) {
        for (const Zerlane::Node& node : device.getNodes()) {
            if (node.is<Zerlane::UnsupportedNode>())
                continue;
            enableMaps(node);
            context.registerNode(node);
        }
    }
    Zerlane::Recorder recorder(file, devices);
    recorder.start();
    std::string runError;
    std::thread eventThread = runEvents(context, runError);
    context.startNodes();
    for (int second = 1; second <= seconds; ++second) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const Zerlane::Recorder::Progress p = recorder.progress();
        std::printf("recording %s: %d/%d s, %llu samples, %.1f MB, %llu dropped, %llu refused\n", file.c_str(), second,
                    seconds, static_cast<unsigned long long>(p.samples), double(p.bytes) / 1e6,
                    static_cast<unsigned long long>(p.dropped), static_cast<unsigned long long>(p.refused));
        std::fflush(stdout);
    }
    context.stopNodes();
    context.quit();
    eventThread.join();
    recorder.stop();
    const Zerlane::Recorder::Progress p = recorder.progress();
    std::printf("recorded %s: %llu samples over %.3f s, %.1f MB\n", file.c_str(),
                static_cast<unsigned long long>(p.samples), double(p.duration) / 1e6, double(p.bytes) / 1e6);
    if (!runError.empty()) {
        std::cerr << "zerlane-probe: " << runError << "\n";
        return 1;
    }
    return 0;
}

int stream(Zerlane::Context& context, int seconds)
{
    std::vector<NodeTap> taps;
    for (const Zerlane::Device& device : context.getDevices()) {
        for (const Zerlane::Node& node : device.getNodes()) {
            if (node.is<Zerlane::UnsupportedNode>())
                continue;
            enableMaps(node);
            taps.push_back(tap(node));
            context.registerNode(node);
        }
    }

    std::string runError;
    std::thread eventThread = runEvents(context, runError);

    context.startNodes();
    for (int second = 1; second <= seconds; ++second) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        std::cout << "t=" << second << "s\n";
        for (NodeTap& tap : taps) {
            NodeCounter& c = *tap.counter;
            const long samples = c.samples.load(), dropped = c.dropped.load();
            std::cout << "  " << c.label << ": " << samples - c.lastSamples << " samples/s, "
                      << dropped - c.lastDropped << " dropped\n";
            c.lastSamples = samples;
            c.lastDropped = dropped;
        }
        std::cout.flush();
    }
    context.stopNodes();
    context.quit();
    eventThread.join();
    for (NodeTap& tap : taps)
        untap(tap);
    if (!runError.empty()) {
        std::cerr << "zerlane-probe: " << runError << "\n";
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    Zerlane::Utils::StreamingMemory::keepSampleBlocks();
    Options options;
    try {
        options = parseOptions(argc, argv);
    } catch (const UsageError& e) {
        std::cerr << "zerlane-probe: " << e.what() << "\n" << kUsage;
        return 2;
    }
    try {
        Zerlane::Context context = openContext(options);
        if (options.list) {
            list(context);
            return 0;
        }
        if (!options.recordFile.empty())
            return record(context, options.recordFile, *options.recordSeconds);
        return stream(context, *options.streamSeconds);
    } catch (const Zerlane::Exception& e) {
        std::cerr << "zerlane-probe: " << e.what() << "\n";
        return 1;
    }
}
