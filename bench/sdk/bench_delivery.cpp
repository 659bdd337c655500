// Cost of handing a VGA depth sample with every map through the standalone runtime (sink -> per-node
// queue -> event queue -> run() -> handler), against a memcpy of the same map bytes measured in the same
// run. The handler checks that every map it gets is the very buffer the driver produced: the runtime
// copies no map data.

#include "StandaloneRuntime.h"

#include "Zerlane/Zerlane.h"
#include "Zerlane/plugin/Driver.h"

#include <benchmark/benchmark.h>

#include "BenchCamera.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

using namespace Zerlane;
using namespace BenchCamera;

namespace {

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
