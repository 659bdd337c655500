// Writing a paused VGA depth frame with every map switched on (CSV) and its 307,200 floating-point
// vertices (PLY), each against the plainest code that writes the same bytes, in the same run: a
// fprintf loop over the same values, and one fwrite of the same point records.

#include "app/shared/StartupOptions.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "mainwindow/FrameExport.h"

#include "Zerlane/Zerlane.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr uint32_t Width = 640;
constexpr uint32_t Height = 480;
constexpr uint32_t Pixels = Width * Height;

NodeData* g_depth = nullptr;
QTemporaryDir* g_directory = nullptr;

// Every map of the depth node switched on, each buffer's displayed slot holding a VGA frame.
void prepareFrame()
{
    CameraManager* manager = CameraManager::instance();
    const Zerlane::Device device = manager->context().getDevices().front();
    DeviceData* deviceRecord = manager->addDevice(device);
    manager->appendDevice(deviceRecord);
    for (const Zerlane::Node& node : device.getNodes()) {
        NodeData* record = manager->addNode(device, node);
        if (!record)
            continue;
        manager->appendNodeToDevice(record);
        if (node.is<Zerlane::DepthNode>())
            g_depth = record;
    }
    for (BufferData* buffer : g_depth->buffers) {
        const QString property = BufferData::enableProperty(buffer->type);
        if (!property.isEmpty())
            Zerlane::Property<bool>::setValue(Zerlane::Interface(g_depth->node), property.toStdString(), true);
        const int slot = buffer->readSlot();
        buffer->width[slot] = Width;
        buffer->height[slot] = Height;
        const uint32_t bytes = BufferData::capacity(buffer->type);
        for (uint32_t i = 0; i + 4 <= bytes; i += 4) {
            const float value = 0.5f + float(i % 4096) / 1024.f; // positive: every vertex is valid
            std::memcpy(buffer->data[slot] + i, &value, 4);
        }
    }
}

// The same rows as the CSV, written by a plain fprintf loop over each map's values.
void plainCsv(const char* path)
{
    FILE* file = std::fopen(path, "w");
    std::fprintf(file, "Time of capture;0.000000\nTime of arrival;0.000000\nTime of event;0.000000\n");
    std::fprintf(file, "Acceleration;%f;%f;%f\n", 0.0, 0.0, 0.0);
    for (BufferData* buffer : g_depth->buffers) {
        const uint32_t type = buffer->type;
        const int perPixel = type == BufferData::Vertices || type == BufferData::VerticesFloatingPoint ? 3
                             : type == BufferData::UV                                                  ? 2
                             : type <= BufferData::DepthFloatingPoint                                   ? 1
                                                                                                       : 0;
        const bool floats = type == BufferData::DepthFloatingPoint || type == BufferData::VerticesFloatingPoint ||
                            type == BufferData::UV;
        const auto* f = reinterpret_cast<const float*>(buffer->data[buffer->readSlot()]);
        const auto* s = reinterpret_cast<const int16_t*>(buffer->data[buffer->readSlot()]);
        size_t index = 0;
        for (uint32_t row = 0; row < Height; ++row) {
            for (uint32_t i = 0; i < Width * uint32_t(perPixel); ++i, ++index) {
                if (floats)
                    std::fprintf(file, ";%f", double(f[index]));
                else
                    std::fprintf(file, ";%d", int(s[index]));
            }
            std::fputc('\n', file);
        }
    }
    std::fclose(file);
}

void plainPly(const char* path)
{
    static std::vector<uint8_t> records(size_t(Pixels) * 12);
    const auto* xyz = g_depth->buffer(BufferData::VerticesFloatingPoint)->data[g_depth->buffer(BufferData::VerticesFloatingPoint)->readSlot()];
    std::memcpy(records.data(), xyz, records.size());
    FILE* file = std::fopen(path, "wb");
    std::fputs("ply\nformat binary_little_endian 1.0\nelement vertex 307200\nproperty float x\nproperty float y\n"
               "property float z\nend_header\n", file);
    std::fwrite(records.data(), 1, records.size(), file);
    std::fclose(file);
}

template <class Candidate, class Baseline>
void compare(benchmark::State& state, Candidate candidate, Baseline baseline)
{
    double best = 1e300, bestBaseline = 1e300;
    for (auto _ : state) {
        auto time = [](auto work) {
            const auto start = std::chrono::steady_clock::now();
            work();
            return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        };
        best = std::min(best, time(candidate));
        bestBaseline = std::min(bestBaseline, time(baseline));
    }
    state.counters["ms"] = best * 1e3;
    state.counters["baseline_ms"] = bestBaseline * 1e3;
    state.counters["ratio"] = best / bestBaseline;
}

void BM_CsvOfAVgaFrame(benchmark::State& state)
{
    const QString path = g_directory->filePath("frame.csv");
    const QByteArray plain = g_directory->filePath("plain.csv").toLocal8Bit();
    compare(state, [&] { FrameExport::writeCsv(path, g_depth, CameraManager::instance()); },
            [&] { plainCsv(plain.constData()); });
}

void BM_PlyOfAVgaFrame(benchmark::State& state)
{
    const QString path = g_directory->filePath("cloud.ply");
    const QByteArray plain = g_directory->filePath("plain.ply").toLocal8Bit();
    compare(state, [&] { FrameExport::writePly(path, g_depth, CameraManager::instance(), 0); },
            [&] { plainPly(plain.constData()); });
}

BENCHMARK(BM_CsvOfAVgaFrame)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlyOfAVgaFrame)->Iterations(30)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    StartupOptions::setStandalone(true);
    QTemporaryDir directory;
    g_directory = &directory;
    prepareFrame();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    CameraManager::destroyInstance();
    return 0;
}
