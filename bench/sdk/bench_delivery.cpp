// Cost of handing a VGA depth sample with every map through the standalone runtime (sink -> per-node
// queue -> event queue -> run() -> handler), against a memcpy of the same map bytes measured in the same
// run. The handler checks that every map it gets is the very buffer the driver produced: the runtime
// copies no map data.

#include "StandaloneRuntime.h"

#include "Zerlane/Zerlane.h"
#include "Zerlane/plugin/Driver.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

using namespace Zerlane;

namespace {

constexpr int32_t kWidth = 640, kHeight = 480, kPixels = kWidth * kHeight;

// One sample's maps in one block, as a plug-in would produce them.
struct MapBlock {
    std::vector<int16_t> phase = std::vector<int16_t>(kPixels, 1);
    std::vector<int16_t> confidence = std::vector<int16_t>(kPixels, 2);
    std::vector<int16_t> depth = std::vector<int16_t>(kPixels, 3);
    std::vector<float> depthFloat = std::vector<float>(kPixels, 4.f);
    std::vector<Vertex> vertices = std::vector<Vertex>(kPixels);
    std::vector<FPVertex> verticesFloat = std::vector<FPVertex>(kPixels);
    std::vector<UV> uv = std::vector<UV>(kPixels);

    static std::size_t bytes()
    {
        return std::size_t(kPixels) * (3 * sizeof(int16_t) + sizeof(float) + sizeof(Vertex) + sizeof(FPVertex) + sizeof(UV));
    }
};

DepthNode::NewSampleReceivedData makeSample(const std::shared_ptr<const MapBlock>& block)
{
    DepthNode::NewSampleReceivedData s;
    s.phaseMap = Pointer<int16_t>(block, block->phase.data(), kPixels);
    s.confidenceMap = Pointer<int16_t>(block, block->confidence.data(), kPixels);
    s.depthMap = Pointer<int16_t>(block, block->depth.data(), kPixels);
    s.depthMapFloatingPoint = Pointer<float>(block, block->depthFloat.data(), kPixels);
    s.vertices = Pointer<Vertex>(block, block->vertices.data(), kPixels);
    s.verticesFloatingPoint = Pointer<FPVertex>(block, block->verticesFloat.data(), kPixels);
    s.uvMap = Pointer<UV>(block, block->uv.data(), kPixels);
    s.captureConfiguration.frameFormat = FRAME_FORMAT_VGA;
    return s;
}

bool sharesMaps(const DepthNode::NewSampleReceivedData& s, const MapBlock& block)
{
    return s.phaseMap.data() == block.phase.data() && s.confidenceMap.data() == block.confidence.data()
        && s.depthMap.data() == block.depth.data() && s.depthMapFloatingPoint.data() == block.depthFloat.data()
        && s.vertices.data() == block.vertices.data() && s.verticesFloatingPoint.data() == block.verticesFloat.data()
        && s.uvMap.data() == block.uv.data();
}

// A one-camera, one-depth-node driver whose samples the benchmark pushes by hand.
class BenchNode : public plugin::NodeDriver {
public:
    NodeKind kind() const override { return NodeKind::Depth; }
    std::shared_ptr<const plugin::TypeSpec> type() const override { return typeSpec(); }
    std::string serialNumber() const override { return "BENCH1"; }
    int32_t vid() const override { return 1; }
    int32_t pid() const override { return 2; }
    int32_t revision() const override { return 3; }
    int32_t mediaInterface() const override { return 0; }
    PropertyValue getProperty(const std::string&) const override { return PropertyValue(true); }
    void setProperty(const std::string&, const PropertyValue&) override {}
    std::vector<PropertyValue> configurations() const override { return {PropertyValue(configuration())}; }
    PropertyValue configuration() const override { return PropertyValue(DepthNodeConfiguration {FRAME_FORMAT_VGA, 30}); }
    void setConfiguration(const PropertyValue&) override {}
    void start(plugin::SampleSink* sink) override { m_sink = sink; }
    void stop() override { m_sink = nullptr; }

    plugin::SampleSink* sink() const { return m_sink; }

private:
    static std::shared_ptr<const plugin::TypeSpec> typeSpec()
    {
        static const auto spec = std::make_shared<const plugin::TypeSpec>(plugin::TypeSpec {"Bench Depth Node", {}});
        return spec;
    }
    std::atomic<plugin::SampleSink*> m_sink {nullptr};
};

class BenchDevice : public plugin::DeviceDriver {
public:
    Device::Model model() const override { return Device::MODEL_UNKNOWN; }
    std::string serialNumber() const override { return "BENCH1"; }
    int32_t usbBackendVersion() const override { return 0; }
    int32_t tofControllerVersion() const override { return 0; }
    bool overheating() const override { return false; }
    bool overheated() const override { return false; }
    std::shared_ptr<const plugin::TypeSpec> type() const override
    {
        static const auto spec = std::make_shared<const plugin::TypeSpec>(plugin::TypeSpec {"Bench Device", {}});
        return spec;
    }
    PropertyValue getProperty(const std::string&) const override { return PropertyValue(true); }
    void setProperty(const std::string&, const PropertyValue&) override {}
    std::vector<std::shared_ptr<plugin::NodeDriver>> nodes() const override { return {node}; }

    std::shared_ptr<BenchNode> node = std::make_shared<BenchNode>();
};

class BenchDriver : public plugin::Driver {
public:
    explicit BenchDriver(std::shared_ptr<BenchDevice> device) : m_device(std::move(device)) {}
    std::string name() const override { return "bench"; }
    void open(plugin::DriverListener* listener) override { listener->deviceAdded(m_device); }
    void close() override {}

private:
    std::shared_ptr<BenchDevice> m_device;
};

// A standalone context over the bench driver, with its one depth node registered and started.
struct Rig {
    std::shared_ptr<BenchDevice> device = std::make_shared<BenchDevice>();
    std::shared_ptr<detail::StandaloneRuntime> runtime = std::make_shared<detail::StandaloneRuntime>();
    Context context;
    DepthNode node;

    Rig()
    {
        std::vector<std::unique_ptr<plugin::Driver>> drivers;
        drivers.push_back(std::make_unique<BenchDriver>(device));
        runtime->open(std::move(drivers));
        context = Context(runtime);
        node = context.getDevices()[0].getNodes()[0].as<DepthNode>();
        context.registerNode(node);
        context.startNodes();
    }
    ~Rig() { context.stopNodes(); }

    void post(const DepthNode::NewSampleReceivedData& sample)
    {
        DepthNode::NewSampleReceivedData copy = sample; // the plug-in hands over Pointers, not maps
        device->node->sink()->depthSample(device->node.get(), std::move(copy));
    }
};

// Every map of the block, one after the other, into `target`.
void copyMaps(const MapBlock& block, char* target)
{
    const auto copy = [&target](const auto& v) {
        const std::size_t n = v.size() * sizeof(v[0]);
        std::memcpy(target, v.data(), n);
        target += n;
    };
    copy(block.phase), copy(block.confidence), copy(block.depth), copy(block.depthFloat);
    copy(block.vertices), copy(block.verticesFloat), copy(block.uv);
}

double memcpyNanoseconds(const MapBlock& block)
{
    std::vector<char> target(MapBlock::bytes());
    std::vector<double> runs;
    for (int r = 0; r < 15; ++r) {
        const auto start = std::chrono::steady_clock::now();
        copyMaps(block, target.data());
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
        runs.push_back(std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(runs.begin(), runs.end());
    return runs[runs.size() / 2];
}

// The baseline itself, for the table.
void BM_MemcpyVgaMaps(benchmark::State& state)
{
    const MapBlock block;
    std::vector<char> target(MapBlock::bytes());
    for (auto _ : state) {
        copyMaps(block, target.data());
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(MapBlock::bytes()));
}

// Samples delivered, those whose maps were not the producer's buffers, and the delivery time against a
// memcpy of the same maps.
void reportDelivery(benchmark::State& state, double delivered, double foreign, double elapsedNs, const MapBlock& block)
{
    const double memcpyNs = memcpyNanoseconds(block);
    state.counters["delivered"] = delivered;
    state.counters["maps_copied"] = foreign;
    state.counters["memcpy_ns"] = memcpyNs;
    state.counters["ratio_vs_memcpy"] = elapsedNs / double(state.iterations()) / memcpyNs;
}

// Post one sample, then run() until its handler has seen it (the handler quits the loop): the whole
// path on one thread, without the cost of waking another.
void BM_DeliverVgaDepthSameThread(benchmark::State& state)
{
    const auto block = std::make_shared<const MapBlock>();
    const DepthNode::NewSampleReceivedData sample = makeSample(block);
    Rig rig;
    long delivered = 0, foreign = 0;
    FunctionHandler<DepthNode, DepthNode::NewSampleReceivedData> handler(
        [&](DepthNode, DepthNode::NewSampleReceivedData data) {
            ++delivered;
            foreign += sharesMaps(data, *block) ? 0 : 1;
            rig.context.quit();
        });
    rig.node.newSampleReceivedEvent().connect(&handler);
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state) {
        rig.post(sample);
        rig.context.run();
    }
    const double elapsedNs = std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
    rig.node.newSampleReceivedEvent().disconnect(&handler);
    reportDelivery(state, double(delivered), double(foreign), elapsedNs, *block);
}

// The realistic case: run() waits on its own thread, the device thread posts and waits until the
// handler has had the sample (so the queue never drops).
void BM_DeliverVgaDepthCrossThread(benchmark::State& state)
{
    const auto block = std::make_shared<const MapBlock>();
    const DepthNode::NewSampleReceivedData sample = makeSample(block);
    Rig rig;
    std::atomic<long> delivered {0};
    std::atomic<long> foreign {0};
    FunctionHandler<DepthNode, DepthNode::NewSampleReceivedData> handler(
        [&](DepthNode, DepthNode::NewSampleReceivedData data) {
            foreign += sharesMaps(data, *block) ? 0 : 1;
            delivered.fetch_add(1, std::memory_order_release);
        });
    rig.node.newSampleReceivedEvent().connect(&handler);
    std::thread loop([&] { rig.context.run(); });
    long expected = 0;
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state) {
        rig.post(sample);
        ++expected;
        while (delivered.load(std::memory_order_acquire) < expected)
            std::this_thread::yield();
    }
    const double elapsedNs = std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
    rig.context.quit();
    loop.join();
    rig.node.newSampleReceivedEvent().disconnect(&handler);
    reportDelivery(state, double(delivered.load()), double(foreign.load()), elapsedNs, *block);
}

// A producer far faster than the consumer: 100 samples arrive before run() gets to them. Only the newest
// two wait (the handler quits after those two), the others are dropped and counted.
void BM_FloodBoundedQueue(benchmark::State& state)
{
    const auto block = std::make_shared<const MapBlock>();
    const DepthNode::NewSampleReceivedData sample = makeSample(block);
    Rig rig;
    long delivered = 0, inBatch = 0, dropped = 0;
    FunctionHandler<DepthNode, DepthNode::NewSampleReceivedData> handler(
        [&](DepthNode, DepthNode::NewSampleReceivedData data) {
            ++delivered;
            dropped = data.droppedSampleTotalCount;
            if (++inBatch == 2)
                rig.context.quit();
        });
    rig.node.newSampleReceivedEvent().connect(&handler);
    for (auto _ : state) {
        inBatch = 0;
        for (int i = 0; i < 100; ++i)
            rig.post(sample);
        rig.context.run();
    }
    rig.node.newSampleReceivedEvent().disconnect(&handler);
    state.counters["delivered_per_100"] = double(delivered) / double(state.iterations());
    state.counters["dropped_per_100"] = double(dropped) / double(state.iterations());
    state.counters["block_refs_after"] = double(block.use_count()); // 1 + the template's 7: nothing held on to
}

} // namespace

BENCHMARK(BM_MemcpyVgaMaps)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DeliverVgaDepthSameThread)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DeliverVgaDepthCrossThread)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FloodBoundedQueue)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
