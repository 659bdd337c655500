// The event thread's sample handlers against what they cannot avoid: copying the same bytes and
// colouring the same images through the palette. Reports ratios against that baseline, measured in
// the same run, for a VGA depth sample with every map on, and the colour handler at 1280x720 YUY2.

#include "app/shared/StartupOptions.h"
#include "app/shared/YuvConverter.h"
#include "camera/BufferData.h"
#include "camera/DepthNodeData.h"
#include "camera/DeviceData.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "palettes/DepthColorizer.h"
#include "palettes/DepthPalette.h"

#include "Zerlane/Zerlane.h"
#include "Zerlane/sim/SimulatorControl.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdio>
#include <map>
#include <cstring>
#include <thread>
#include <vector>

namespace {

struct Captured {
    Zerlane::DepthNode::NewSampleReceivedData depth;
    Zerlane::ColorNode::NewSampleReceivedData color;
    NodeData* depthRecord = nullptr;
    NodeData* colorRecord = nullptr;
};

// One real sample of each kind from the simulated camera, and the records the handlers fill.
Captured& captured()
{
    static Captured c = [] {
        Captured result;
        StartupOptions::setStandalone(true);
        Zerlane::Sim::Control::setStepped(true);
        CameraManager* manager = CameraManager::instance();
        Zerlane::Context context = manager->context();
        Zerlane::Device device = context.getDevices().front();
        manager->appendDevice(manager->addDevice(device));
        Zerlane::DepthNode depth;
        Zerlane::ColorNode color;
        for (const Zerlane::Node& node : device.getNodes()) {
            NodeData* record = manager->addNode(device, node);
            manager->appendNodeToDevice(record);
            if (node.is<Zerlane::DepthNode>()) {
                depth = Zerlane::DepthNode(node);
                result.depthRecord = record;
            } else if (node.is<Zerlane::ColorNode>()) {
                color = Zerlane::ColorNode(node);
                result.colorRecord = record;
            }
        }
        for (const char* map : {"enablePhaseMap", "enableConfidenceMap", "enableDepthMap", "enableDepthMapFloatingPoint",
                                "enableVertices", "enableVerticesFloatingPoint", "enableUvMap"})
            Zerlane::Property<bool>::setValue(depth, map, true);
        Zerlane::Property<bool>::setValue(color, "enableColorMap", true);
        context.requestControl(color);
        Zerlane::ColorNode::Configuration hd = color.getConfiguration();
        hd.frameFormat = Zerlane::FRAME_FORMAT_HD720;
        hd.compression = Zerlane::COMPRESSION_TYPE_YUY2;
        color.setConfiguration(hd);

        std::atomic<int> received{0};
        Zerlane::FunctionHandler<Zerlane::DepthNode, Zerlane::DepthNode::NewSampleReceivedData> onDepth(
            [&](Zerlane::DepthNode, Zerlane::DepthNode::NewSampleReceivedData s) { result.depth = s; ++received; });
        Zerlane::FunctionHandler<Zerlane::ColorNode, Zerlane::ColorNode::NewSampleReceivedData> onColor(
            [&](Zerlane::ColorNode, Zerlane::ColorNode::NewSampleReceivedData s) { result.color = s; ++received; });
        depth.newSampleReceivedEvent().connect(&onDepth);
        color.newSampleReceivedEvent().connect(&onColor);
        context.registerNode(depth);
        context.registerNode(color);
        context.startNodes();
        Zerlane::Sim::Control::step(1);
        std::thread loop([&] { context.run(); });
        while (received < 2)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        context.quit();
        loop.join();
        context.stopNodes();
        depth.newSampleReceivedEvent().disconnect(&onDepth);
        color.newSampleReceivedEvent().disconnect(&onColor);
        manager->setStreamingState(CameraManager::Streaming);
        return result;
    }();
    return c;
}

size_t mapBytes(const Zerlane::DepthNode::NewSampleReceivedData& s)
{
    return size_t(s.phaseMap.size()) * 2 + size_t(s.confidenceMap.size()) * 2 + size_t(s.depthMap.size()) * 2
        + size_t(s.depthMapFloatingPoint.size()) * 4 + size_t(s.vertices.size()) * 6
        + size_t(s.verticesFloatingPoint.size()) * 12 + size_t(s.uvMap.size()) * 8;
}

void BM_DepthHandler(benchmark::State& state)
{
    Captured& c = captured();
    ZerlaneThread* thread = ZerlaneThread::instance();
    Zerlane::DepthNode node(c.depthRecord->node);
    for (auto _ : state)
        thread->onDepthSample(node, c.depth);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(mapBytes(c.depth)));
}

// What the depth handler has to do at least: copy every map once into its own double-buffered block
// and colour the four images, also double-buffered, through the palette.
void BM_DepthBaseline(benchmark::State& state)
{
    Captured& c = captured();
    const auto& s = c.depth;
    const int pixels = 640 * 480;
    const std::pair<const void*, size_t> maps[] = {
        {s.phaseMap.data(), size_t(s.phaseMap.size()) * 2},
        {s.confidenceMap.data(), size_t(s.confidenceMap.size()) * 2},
        {s.depthMap.data(), size_t(s.depthMap.size()) * 2},
        {s.depthMapFloatingPoint.data(), size_t(s.depthMapFloatingPoint.size()) * 4},
        {s.vertices.data(), size_t(s.vertices.size()) * 6},
        {s.verticesFloatingPoint.data(), size_t(s.verticesFloatingPoint.size()) * 12},
        {s.uvMap.data(), size_t(s.uvMap.size()) * 8},
    };
    std::vector<std::vector<uint8_t>> copies[2];
    std::vector<std::vector<uint32_t>> images[2];
    for (int slot = 0; slot < 2; ++slot) {
        for (const auto& map : maps)
            copies[slot].emplace_back(map.second);
        for (int i = 0; i < 4; ++i)
            images[slot].emplace_back(static_cast<size_t>(pixels));
    }
    const DepthPalette& palette = *CameraManager::instance()->palette();
    const float range = static_cast<DepthNodeData*>(c.depthRecord)->range();
    int slot = 0;
    for (auto _ : state) {
        slot = 1 - slot;
        for (size_t i = 0; i < std::size(maps); ++i)
            std::memcpy(copies[slot][i].data(), maps[i].first, maps[i].second);
        auto& image = images[slot];
        DepthColorizer::colorize16(reinterpret_cast<const uint16_t*>(s.phaseMap.data()), image[0].data(), pixels, palette);
        DepthColorizer::colorize16(reinterpret_cast<const uint16_t*>(s.confidenceMap.data()), image[1].data(), pixels, palette);
        DepthColorizer::colorizeDepth(s.depthMap.data(), image[2].data(), pixels, palette, range);
        DepthColorizer::colorizeDepthFloat(s.depthMapFloatingPoint.data(), image[3].data(), pixels, palette, range);
        benchmark::DoNotOptimize(image.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(mapBytes(s)));
}

void BM_ColorHandlerHd720Yuy2(benchmark::State& state)
{
    Captured& c = captured();
    ZerlaneThread* thread = ZerlaneThread::instance();
    Zerlane::ColorNode node(c.colorRecord->node);
    for (auto _ : state)
        thread->onColorSample(node, c.color);
}

void BM_ColorBaselineHd720Yuy2(benchmark::State& state)
{
    Captured& c = captured();
    std::vector<uint8_t> bgr(1280 * 720 * 3);
    for (auto _ : state) {
        YuvConverter::yuy2ToBgr(c.color.colorMap.data(), bgr.data(), 1280, 720);
        benchmark::DoNotOptimize(bgr.data());
    }
}

BENCHMARK(BM_DepthBaseline)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DepthHandler)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColorBaselineHd720Yuy2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColorHandlerHd720Yuy2)->Unit(benchmark::kMillisecond);

// Prints each handler's time as a ratio of its baseline from the same run.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            times[run.benchmark_name()] = run.GetAdjustedCPUTime();
    }
    void Finalize() override
    {
        ConsoleReporter::Finalize();
        auto ratio = [&](const char* handler, const char* baseline) {
            if (times.count(handler) && times.count(baseline))
                std::printf("%s / %s = %.2f\n", handler, baseline, times[handler] / times[baseline]);
        };
        ratio("BM_DepthHandler", "BM_DepthBaseline");
        ratio("BM_ColorHandlerHd720Yuy2", "BM_ColorBaselineHd720Yuy2");
    }
    std::map<std::string, double> times;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    YuvConverter::initTables();
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    ZerlaneThread::destroyInstance();
    CameraManager::destroyInstance();
    return 0;
}
