// Paint costs of the OpenGL view, in wall-clock time (the GL work runs on the driver's threads), each
// with its ratio against a baseline timed in the same run:
//   paint of a new 640x480 RGBA sample (upload + quad)   against memcpy of the same 1,228,800 bytes
//   repaint of the same sample (no upload)               against the same memcpy
//   UV view of 640x480 points as triangles                against the same view as points
//   3D view of 640x480 floating-point vertices as points  against one bare glDrawArrays(GL_POINTS) of them
// Needs a display: run it under xvfb-run (Mesa llvmpipe).
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "views/ViewContext.h"
#include "support/ViewerTestSupport.h"
#include "views/DisplayWidget.h"
#include "worker/Settings.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <GL/gl.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 640, kHeight = 480, kPixels = kWidth * kHeight;

// paintGL is protected: the benchmark calls it directly, in the widget's context, and waits for the
// GL work to finish.
class PaintedWidget : public DisplayWidget {
public:
    void paintNow()
    {
        makeCurrent();
        paintGL();
        glFinish();
        doneCurrent();
    }
    void drawBarePoints(const void* xyz, int count)
    {
        makeCurrent();
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_DEPTH_TEST);
        glPointSize(float(DisplayPreferences().dotSize));
        glEnableClientState(GL_VERTEX_ARRAY);
        glVertexPointer(3, GL_FLOAT, 0, xyz);
        glDrawArrays(GL_POINTS, 0, count);
        glDisableClientState(GL_VERTEX_ARRAY);
        glFinish();
        doneCurrent();
    }
};

std::map<std::string, double> g_best; // best seconds per iteration, by name

// Streaming, no axes; the UV benchmarks choose points or triangles.
class BenchViewContext : public ViewContext {
public:
    bool streamingStopped() const override { return false; }
    qint64 relativeTime(quint64 time) const override { return qint64(time); }
    void lockBuffers() override { m_lock.lock(); }
    void unlockBuffers() override { m_lock.unlock(); }
    DisplayPreferences preferences() const override { return values; }

    DisplayPreferences values;

private:
    QMutex m_lock;
};

BenchViewContext* g_context = nullptr;

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

template <class Body>
void timeBest(benchmark::State& state, const char* name, Body body)
{
    double best = 1e300;
    for (auto _ : state) {
        const double t0 = now();
        body();
        const double t = now() - t0;
        state.SetIterationTime(t);
        best = std::min(best, t);
    }
    g_best[name] = std::min(g_best.count(name) ? g_best[name] : 1e300, best);
}

struct Records {
    Records()
    {
        device = new DeviceData(Zerlane::Device(), {});
        depth = new NodeData(Zerlane::Node(), device, {});
        device->nodes = {depth};
        depthImage = new BufferData(depth, BufferData::Depth);
        vertices = new BufferData(depth, BufferData::VerticesFloatingPoint);
        uv = new BufferData(depth, BufferData::UV);
        depth->buffers = {depthImage, vertices, uv};
        for (BufferData* b : depth->buffers) {
            b->writeSlot = 0; // readers see slot 1
            b->sizeChanged[1] = false;
            b->width[1] = kWidth;
            b->height[1] = kHeight;
            b->image[1].resize(kWidth, kHeight);
            b->frameCount = 1;
        }
        auto* words = reinterpret_cast<uint32_t*>(depthImage->image[1].pixels);
        for (int i = 0; i < kPixels; ++i)
            words[i] = 0xFF000000u | uint32_t(i * 2654435761u >> 8);
        auto* xyz = reinterpret_cast<float*>(vertices->data[1]);
        auto* st = reinterpret_cast<float*>(uv->data[1]);
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const int i = y * kWidth + x;
                const float z = 1.f + 0.01f * float((x * 7 + y * 13) % 5);
                xyz[3 * i] = (float(x) / kWidth - 0.5f) * 0.8f * z;
                xyz[3 * i + 1] = (float(y) / kHeight - 0.5f) * 0.6f * z;
                xyz[3 * i + 2] = z;
                st[2 * i] = float(x) / kWidth;
                st[2 * i + 1] = float(y) / kHeight;
            }
        }
    }
    ~Records()
    {
        depth->release();
        device->release();
    }
    DeviceData* device;
    NodeData* depth;
    BufferData* depthImage;
    BufferData* vertices;
    BufferData* uv;
};

Records* g_records = nullptr;

PaintedWidget* shownWidget(BufferData* buffer)
{
    auto* w = new PaintedWidget;
    w->setContext(g_context);
    w->setBuffer(buffer);
    w->loadCameraPreset(Settings::Front);
    w->resize(kWidth, kHeight);
    w->show();
    QApplication::processEvents();
    return w;
}

void BM_MemcpyBaseline(benchmark::State& state)
{
    std::vector<uint8_t> source(kPixels * 4, 7), target(kPixels * 4);
    timeBest(state, "memcpy", [&] {
        std::memcpy(target.data(), source.data(), target.size());
        benchmark::ClobberMemory();
    });
}

void BM_PaintNewSample(benchmark::State& state)
{
    PaintedWidget* w = shownWidget(g_records->depthImage);
    timeBest(state, "newSample", [&] {
        g_records->depthImage->image[1].markChanged();
        w->paintNow();
    });
    delete w;
}

void BM_RepaintSameSample(benchmark::State& state)
{
    PaintedWidget* w = shownWidget(g_records->depthImage);
    w->paintNow();
    timeBest(state, "sameSample", [&] { w->paintNow(); });
    delete w;
}

void BM_UvPoints(benchmark::State& state)
{
    g_context->values.displayTriangles = false;
    PaintedWidget* w = shownWidget(g_records->uv);
    timeBest(state, "uvPoints", [&] { w->paintNow(); });
    delete w;
}

void BM_VertexPoints(benchmark::State& state)
{
    PaintedWidget* w = shownWidget(g_records->vertices);
    timeBest(state, "vertexPoints", [&] { w->paintNow(); });
    delete w;
}

// The least any view can do with the same points: one bare glDrawArrays(GL_POINTS) of the array in the
// same size of context, with the view's depth test and point size.
void BM_BarePointsDraw(benchmark::State& state)
{
    PaintedWidget* w = shownWidget(g_records->vertices);
    const void* xyz = g_records->vertices->data[1];
    timeBest(state, "barePoints", [&] { w->drawBarePoints(xyz, kPixels); });
    delete w;
}

void BM_UvTriangles(benchmark::State& state)
{
    g_context->values.displayTriangles = true;
    PaintedWidget* w = shownWidget(g_records->uv);
    timeBest(state, "uvTriangles", [&] { w->paintNow(); });
    delete w;
}

BENCHMARK(BM_MemcpyBaseline)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PaintNewSample)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RepaintSameSample)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UvPoints)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_VertexPoints)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BarePointsDraw)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UvTriangles)->UseManualTime()->Unit(benchmark::kMillisecond);

void printRatio(const char* what, const char* name, const char* baseline)
{
    if (!g_best.count(name) || !g_best.count(baseline))
        return;
    std::printf("%-40s %8.3f ms  baseline %8.3f ms  ratio %7.2f\n", what, g_best[name] * 1e3, g_best[baseline] * 1e3,
                g_best[name] / g_best[baseline]);
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        std::printf("bench_displaywidget needs a display with OpenGL: run it under xvfb-run\n");
        return 0;
    }
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    ViewerTest::isolateSettings();
    BenchViewContext context;
    context.values.displayAxis = false;
    g_context = &context;
    {
        Records records;
        g_records = &records;
        benchmark::RunSpecifiedBenchmarks();
        g_records = nullptr;
    }

    std::printf("\nSummary (best wall-clock times; baselines timed in this run)\n");
    printRatio("paint new 640x480 sample vs memcpy", "newSample", "memcpy");
    printRatio("repaint same sample vs memcpy", "sameSample", "memcpy");
    printRatio("UV 640x480 triangles vs points", "uvTriangles", "uvPoints");
    printRatio("3D view of 640x480 vertices vs bare draw", "vertexPoints", "barePoints");
    benchmark::Shutdown();
    return 0;
}
