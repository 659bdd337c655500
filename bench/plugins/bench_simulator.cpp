// Cost of one sample of the simulated ToF camera, made synchronously (stepped mode, one thread), against
// a baseline measured in the same run: memcpy of as many bytes as the sample carries. The depth renderer is
// also measured on its own over a sweep of capture times, since the moving objects' cost depends on them,
// in both camera modes (the long-range room and the close-range desk with its hand).
#include "Zerlane/plugin/Driver.h"
#include "Zerlane/plugin/SampleSink.h"
#include "Zerlane/sim/SimulatorControl.h"
#include "sdk/plugins/DepthRenderer.h"
#include "sdk/plugins/DeskScene.h"
#include "sdk/plugins/RoomScene.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

extern "C" void zerlaneCreateDrivers(std::vector<std::unique_ptr<Zerlane::plugin::Driver>>& drivers);

using namespace Zerlane;

namespace {

constexpr int VgaPixels = 640 * 480;
// Phase, confidence, depth (2 bytes each), depth in metres (4), vertices (6), vertices in metres (12), UV (8).
constexpr std::size_t DepthBytesPerPixel = 2 + 2 + 2 + 4 + 6 + 12 + 8;

class NullListener : public plugin::DriverListener {
public:
    std::shared_ptr<plugin::DeviceDriver> device;
    void deviceAdded(const std::shared_ptr<plugin::DeviceDriver>& d) override
    {
        if (!device)
            device = d;
    }
    void deviceRemoved(const std::shared_ptr<plugin::DeviceDriver>&) override {}
    void nodeAdded(plugin::DeviceDriver*, const std::shared_ptr<plugin::NodeDriver>&) override {}
    void nodeRemoved(plugin::DeviceDriver*, const std::shared_ptr<plugin::NodeDriver>&) override {}
    void propertyChanged(plugin::DeviceDriver*, plugin::NodeDriver*, const std::string&) override {}
    void transportFailed(const std::string&) override {}
};

// Touches each sample so it cannot be optimised away, then lets it go back to the node's pool.
class CountingSink : public plugin::SampleSink {
public:
    int64_t samples = 0;
    void depthSample(plugin::NodeDriver*, DepthNode::NewSampleReceivedData&& s) override
    {
        benchmark::DoNotOptimize(s.depthMap.data());
        ++samples;
    }
    void colorSample(plugin::NodeDriver*, ColorNode::NewSampleReceivedData&& s) override
    {
        benchmark::DoNotOptimize(s.colorMap.data());
        ++samples;
    }
    void audioSample(plugin::NodeDriver*, AudioNode::NewSampleReceivedData&& s) override
    {
        benchmark::DoNotOptimize(s.audioData.data());
        ++samples;
    }
};

// One camera, one node streaming into a counting sink, samples made by Sim::Control::step.
class SteppedNode {
public:
    explicit SteppedNode(NodeKind kind)
    {
        Sim::Control::reset();
        Sim::Control::setStepped(true);
        std::vector<std::unique_ptr<plugin::Driver>> drivers;
        zerlaneCreateDrivers(drivers);
        m_driver = std::move(drivers.at(0));
        m_driver->open(&m_listener);
        for (const auto& node : m_listener.device->nodes())
            if (node->kind() == kind)
                m_node = node;
    }
    ~SteppedNode()
    {
        m_node->stop();
        m_driver->close();
    }
    plugin::NodeDriver& node() { return *m_node; }
    void start() { m_node->start(&m_sink); }
    // The camera mode of the device's depth node, which chooses the scene every camera of it sees.
    void setDepthMode(CameraMode mode)
    {
        for (const auto& node : m_listener.device->nodes()) {
            if (node->kind() != NodeKind::Depth)
                continue;
            auto configuration = std::get<DepthNodeConfiguration>(node->configuration());
            configuration.mode = mode;
            node->setConfiguration(configuration);
        }
    }

private:
    NullListener m_listener;
    CountingSink m_sink;
    std::unique_ptr<plugin::Driver> m_driver;
    std::shared_ptr<plugin::NodeDriver> m_node;
};

void memcpyBaseline(benchmark::State& state, std::size_t bytes)
{
    std::vector<uint8_t> from(bytes, 7), to(bytes);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
}

void BM_MemcpyDepthVgaAllMaps(benchmark::State& state)
{
    memcpyBaseline(state, VgaPixels * DepthBytesPerPixel);
}

void BM_DepthVgaAllMaps(benchmark::State& state)
{
    SteppedNode depth(NodeKind::Depth);
    for (const char* name : {"enablePhaseMap", "enableConfidenceMap", "enableDepthMap", "enableDepthMapFloatingPoint",
                             "enableVertices", "enableVerticesFloatingPoint", "enableUvMap"})
        depth.node().setProperty(name, true);
    depth.start();
    Sim::Control::step(1); // builds the per-resolution caches
    for (auto _ : state)
        Sim::Control::step(1);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(VgaPixels * DepthBytesPerPixel));
}

sim::DepthRenderer::Settings allDepthMaps(CameraMode mode)
{
    sim::DepthRenderer::Settings settings;
    settings.configuration.frameFormat = FRAME_FORMAT_VGA;
    settings.configuration.frameRate = 30;
    settings.configuration.mode = mode;
    settings.phaseMap = settings.confidenceMap = settings.depthMap = settings.depthMapFloatingPoint = true;
    settings.vertices = settings.verticesFloatingPoint = settings.uvMap = true;
    return settings;
}

void renderAt(benchmark::State& state, uint64_t captureTime, CameraMode mode = CAMERA_MODE_LONG_RANGE)
{
    sim::DepthRenderer renderer(1);
    const sim::DepthRenderer::Settings settings = allDepthMaps(mode);
    renderer.render(settings, captureTime); // builds the per-resolution caches
    for (auto _ : state) {
        const DepthNode::NewSampleReceivedData sample = renderer.render(settings, captureTime);
        benchmark::DoNotOptimize(sample.depthMap.data());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(VgaPixels * DepthBytesPerPixel));
}

// The renderer alone at a fixed capture time (the argument, in ms): the moving objects cost more where they
// cover more pixels, so the sweep over times shows the best and the worst case.
void BM_DepthVgaAllMapsAt(benchmark::State& state)
{
    renderAt(state, uint64_t(state.range(0)) * 1000);
}

// The capture time (microseconds) within the first two minutes at which the moving objects' screen
// rectangles cover the most pixels: the ray casts' worst case.
template <class SceneType>
uint64_t busiestCaptureTime()
{
    const sim::PinholeCamera camera = sim::PinholeCamera::depth(640, 480);
    uint64_t busiest = 0;
    int mostPixels = -1;
    for (uint64_t time = 0; time < 120'000'000; time += 5'000) {
        int pixels = 0;
        for (const sim::ScreenRect& rect : SceneType(double(time) * 1e-6).movingRects(camera))
            pixels += rect.area();
        if (pixels > mostPixels) {
            mostPixels = pixels;
            busiest = time;
        }
    }
    return busiest;
}

void BM_DepthVgaAllMapsBusiest(benchmark::State& state)
{
    static const uint64_t time = busiestCaptureTime<sim::RoomScene>();
    state.SetLabel("t = " + std::to_string(time / 1000) + " ms");
    renderAt(state, time);
}

// The same in the close-range mode: the desk, with a hand that fills much of the picture when it comes near
// (at 4 s of every 8).
void BM_DepthVgaCloseRangeAt(benchmark::State& state)
{
    renderAt(state, uint64_t(state.range(0)) * 1000, CAMERA_MODE_CLOSE_RANGE);
}

void BM_DepthVgaCloseRangeBusiest(benchmark::State& state)
{
    static const uint64_t time = busiestCaptureTime<sim::DeskScene>();
    state.SetLabel("t = " + std::to_string(time / 1000) + " ms");
    renderAt(state, time, CAMERA_MODE_CLOSE_RANGE);
}

void colorHd720(benchmark::State& state, CompressionType compression, CameraMode mode = CAMERA_MODE_LONG_RANGE)
{
    SteppedNode color(NodeKind::Color);
    color.setDepthMode(mode);
    auto configuration = std::get<ColorNodeConfiguration>(color.node().configuration());
    configuration.frameFormat = FRAME_FORMAT_HD720;
    configuration.compression = compression;
    color.node().setConfiguration(configuration);
    color.node().setProperty("enableColorMap", true);
    color.start();
    Sim::Control::step(1);
    for (auto _ : state)
        Sim::Control::step(1);
    state.SetBytesProcessed(int64_t(state.iterations()) * 1280 * 720 * (compression == COMPRESSION_TYPE_NONE ? 3 : 2));
}

void BM_MemcpyColorHd720Yuy2(benchmark::State& state)
{
    memcpyBaseline(state, 1280 * 720 * 2);
}
void BM_ColorHd720Yuy2(benchmark::State& state)
{
    colorHd720(state, COMPRESSION_TYPE_YUY2);
}
void BM_MemcpyColorHd720Bgr(benchmark::State& state)
{
    memcpyBaseline(state, 1280 * 720 * 3);
}
void BM_ColorHd720Bgr(benchmark::State& state)
{
    colorHd720(state, COMPRESSION_TYPE_NONE);
}
// The desk seen by the colour camera while the depth node is in close-range mode (clocked, so at whatever
// time the hand is then).
void BM_ColorHd720Yuy2CloseRange(benchmark::State& state)
{
    colorHd720(state, COMPRESSION_TYPE_YUY2, CAMERA_MODE_CLOSE_RANGE);
}

BENCHMARK(BM_MemcpyDepthVgaAllMaps)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DepthVgaAllMaps)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DepthVgaAllMapsAt)->DenseRange(0, 11500, 500)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DepthVgaAllMapsBusiest)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DepthVgaCloseRangeAt)->DenseRange(0, 7500, 500)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DepthVgaCloseRangeBusiest)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MemcpyColorHd720Yuy2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColorHd720Yuy2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MemcpyColorHd720Bgr)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColorHd720Bgr)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColorHd720Yuy2CloseRange)->Unit(benchmark::kMillisecond);

// Prints each benchmark as usual and remembers its times per iteration (the mean over repetitions).
class RatioReporter : public benchmark::ConsoleReporter {
public:
    struct Times {
        double realMs = 0.0;
        double cpuMs = 0.0;
    };
    std::map<std::string, Times> times;

    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const bool mean = run.run_type == Run::RT_Aggregate && run.aggregate_name == "mean";
            if (run.run_type != Run::RT_Iteration && !mean)
                continue;
            const double toMs = benchmark::GetTimeUnitMultiplier(benchmark::kMillisecond) /
                                benchmark::GetTimeUnitMultiplier(run.time_unit);
            times[run.run_name.str()] = {run.GetAdjustedRealTime() * toMs, run.GetAdjustedCPUTime() * toMs};
        }
    }
};

// Best and worst of the renderer over a sweep of capture times (the busiest time included), against memcpy.
void printSweep(const std::map<std::string, RatioReporter::Times>& ms, const std::string& prefix,
                const char* title)
{
    const std::pair<const std::string, RatioReporter::Times>* best = nullptr;
    const std::pair<const std::string, RatioReporter::Times>* worst = nullptr;
    for (const auto& entry : ms) {
        const std::string& name = entry.first;
        if (name.rfind(prefix + "At/", 0) != 0 && name != prefix + "Busiest")
            continue;
        if (!best || entry.second.cpuMs < best->second.cpuMs)
            best = &entry;
        if (!worst || entry.second.cpuMs > worst->second.cpuMs)
            worst = &entry;
    }
    if (!best)
        return;
    const double baseline = ms.count("BM_MemcpyDepthVgaAllMaps") ? ms.at("BM_MemcpyDepthVgaAllMaps").cpuMs : 0.0;
    std::printf("  %s: best cpu %.3f ms (%s), worst cpu %.3f ms (%s) = %.1f x memcpy\n", title,
                best->second.cpuMs, best->first.c_str() + prefix.size(), worst->second.cpuMs,
                worst->first.c_str() + prefix.size(), baseline > 0.0 ? worst->second.cpuMs / baseline : 0.0);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    const auto& ms = reporter.times;
    std::printf("\nRatios against memcpy of the same bytes, real time and CPU time (budget for a VGA depth sample\n"
                "with every map: 5 ms; CPU time is the fairer figure on a machine shared with other work)\n");
    const std::pair<const char*, const char*> pairs[] = {
        {"BM_DepthVgaAllMaps", "BM_MemcpyDepthVgaAllMaps"},
        {"BM_ColorHd720Yuy2", "BM_MemcpyColorHd720Yuy2"},
        {"BM_ColorHd720Bgr", "BM_MemcpyColorHd720Bgr"},
        {"BM_ColorHd720Yuy2CloseRange", "BM_MemcpyColorHd720Yuy2"},
    };
    for (const auto& [measured, baseline] : pairs) {
        if (!ms.count(measured) || !ms.count(baseline))
            continue;
        const auto& m = ms.at(measured);
        const auto& b = ms.at(baseline);
        std::printf("  %-27s real %7.3f ms = %5.1f x memcpy (%.3f ms) | cpu %7.3f ms = %5.1f x memcpy (%.3f ms)\n",
                    measured, m.realMs, m.realMs / b.realMs, b.realMs, m.cpuMs, m.cpuMs / b.cpuMs, b.cpuMs);
    }
    printSweep(ms, "BM_DepthVgaAllMaps", "long-range sweep of capture times");
    printSweep(ms, "BM_DepthVgaCloseRange", "close-range sweep of capture times");
    return 0;
}
