// Recording throughput and playback speed of a 30 fps VGA camera with every map on (phase, confidence,
// depth, floating-point depth, vertices, floating-point vertices, UV, 640 x 480 YUY2 colour, 16 kHz audio).
//   BM_Record:   writes one second of samples (30 of each video node, 20 audio blocks) to a file. Counters:
//                needed_MBps (what the camera produces), achieved_MBps, x_realtime (how many times faster
//                than the camera the writer is).
//   BM_Playback: reads that second back into samples, each handed to a consumer that touches every map.
//                Counter x_realtime: seconds of recording per second of one core. First with the C
//                library's default memory policy, then (KeepingSampleBlocks) with the one our programs
//                opt into at start, Utils::StreamingMemory (it cannot be undone, so it runs last).
//   BM_Memcpy:   the baseline: copying the same bytes once.
#include "RecordingReader.h"
#include "RecordingWriter.h"

#include "Zerlane/Utils/StreamingMemory.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Zerlane;
using namespace Zerlane::recording;

namespace {

constexpr int Width = 640, Height = 480, Pixels = Width * Height, Fps = 30;

std::string benchFile()
{
    const char* dir = std::getenv("TMPDIR");
    return std::string(dir ? dir : "/tmp") + "/bench_recording_" + std::to_string(getpid()) + ".mkv";
}

RecordedDevice::Property boolProperty(const char* name, bool value)
{
    RecordedDevice::Property p;
    p.spec.name = name;
    p.spec.type = PropertyType::Bool;
    p.value = value;
    return p;
}

std::vector<RecordedDevice> camera()
{
    RecordedDevice device;
    device.serial = "BENCH1";
    device.typeName = "Bench camera";
    RecordedDevice::Node depth;
    depth.kind = NodeKind::Depth;
    depth.serial = "BENCH1";
    depth.configuration = DepthNodeConfiguration {FRAME_FORMAT_VGA, Fps, CAMERA_MODE_CLOSE_RANGE, false};
    depth.configurations = {depth.configuration};
    depth.properties = {boolProperty("enableDepthMap", true)};
    RecordedDevice::Node color = depth;
    color.kind = NodeKind::Color;
    color.configuration = ColorNodeConfiguration {FRAME_FORMAT_VGA, COMPRESSION_TYPE_YUY2, Fps, POWER_LINE_FREQUENCY_50HZ};
    color.configurations = {color.configuration};
    RecordedDevice::Node audio = depth;
    audio.kind = NodeKind::Audio;
    AudioNodeConfiguration sound;
    sound.audioFormat = {16000, 16, 1};
    audio.configuration = sound;
    audio.configurations = {sound};
    device.nodes = {depth, color, audio};
    return {device};
}

template <class T>
Pointer<T> map(std::shared_ptr<std::vector<uint8_t>> bytes, size_t elements)
{
    return Pointer<T>(bytes, reinterpret_cast<const T*>(bytes->data()), int32_t(elements));
}

// One sample of each kind, with varied bytes (a pattern a compressor would not shrink; we store raw anyway).
struct Samples {
    DepthNode::NewSampleReceivedData depth;
    ColorNode::NewSampleReceivedData color;
    AudioNode::NewSampleReceivedData audio;
    size_t depthBytes = 0, colorBytes = 0, audioBytes = 0;

    Samples()
    {
        auto bytes = std::make_shared<std::vector<uint8_t>>(size_t(Pixels) * 12);
        uint32_t x = 12345;
        for (uint8_t& b : *bytes)
            b = uint8_t((x = x * 1664525u + 1013904223u) >> 24);
        depth.phaseMap = map<int16_t>(bytes, Pixels);
        depth.confidenceMap = map<int16_t>(bytes, Pixels);
        depth.depthMap = map<int16_t>(bytes, Pixels);
        depth.depthMapFloatingPoint = map<float>(bytes, Pixels);
        depth.vertices = map<Vertex>(bytes, Pixels);
        depth.verticesFloatingPoint = map<FPVertex>(bytes, Pixels);
        depth.uvMap = map<UV>(bytes, Pixels);
        depth.captureConfiguration = {FRAME_FORMAT_VGA, Fps, CAMERA_MODE_CLOSE_RANGE, false};
        depthBytes = size_t(Pixels) * (2 + 2 + 2 + 4 + 6 + 12 + 8);
        color.colorMap = map<uint8_t>(bytes, size_t(Pixels) * 2);
        color.captureConfiguration = {FRAME_FORMAT_VGA, COMPRESSION_TYPE_YUY2, Fps, POWER_LINE_FREQUENCY_50HZ};
        colorBytes = size_t(Pixels) * 2;
        audio.audioData = map<uint8_t>(bytes, 1600); // 50 ms at 16 kHz, 16 bits
        audio.audioFormat = {16000, 16, 1};
        audioBytes = 1600;
    }
    size_t secondBytes() const { return (depthBytes + colorBytes) * Fps + audioBytes * 20; }
};

// One second of the camera into the file.
void writeSecond(RecordingWriter& writer, Samples& s, uint64_t start)
{
    for (int i = 0; i < Fps; ++i) {
        const uint64_t t = start + uint64_t(i) * 1000000 / Fps;
        s.depth.timeOfCapture = s.color.timeOfCapture = t;
        writer.writeDepth(0, 0, s.depth);
        writer.writeColor(0, 1, s.color);
        if (i % 3 != 2) { // 20 blocks of 50 ms
            s.audio.timeOfCapture = t;
            writer.writeAudio(0, 2, s.audio);
        }
    }
}

void BM_Record(benchmark::State& state)
{
    Samples samples;
    const std::string file = benchFile();
    uint64_t seconds = 0;
    for (auto _ : state) {
        RecordingWriter writer(file, camera());
        writeSecond(writer, samples, 1000000);
        writer.finish();
        ++seconds;
    }
    std::remove(file.c_str());
    const double bytes = double(samples.secondBytes());
    state.SetBytesProcessed(int64_t(bytes * double(seconds)));
    state.counters["needed_MBps"] = bytes / 1e6;
    state.counters["achieved_MBps"] = benchmark::Counter(bytes * double(seconds) / 1e6, benchmark::Counter::kIsRate);
    state.counters["x_realtime"] = benchmark::Counter(double(seconds), benchmark::Counter::kIsRate);
}

void BM_Playback(benchmark::State& state)
{
    Samples samples;
    const std::string file = benchFile();
    {
        RecordingWriter writer(file, camera());
        writeSecond(writer, samples, 1000000);
        writer.finish();
    }
    uint64_t seconds = 0, checksum = 0;
    for (auto _ : state) {
        RecordingReader reader(file);
        RecordingReader::Sample sample;
        while (reader.next(sample)) {
            // The consumer reads one value of every map, as a handler that copies them would start to.
            const auto& d = sample.depth;
            if (d.depthMap.data())
                checksum += uint64_t(d.depthMap[Pixels - 1]) + uint64_t(d.phaseMap[7]) + uint64_t(d.uvMap[9].u)
                            + uint64_t(d.verticesFloatingPoint[3].z) + uint64_t(d.vertices[5].x)
                            + uint64_t(d.confidenceMap[11]) + uint64_t(d.depthMapFloatingPoint[13]);
            if (sample.color.colorMap.data())
                checksum += sample.color.colorMap[100];
            sample = {};
        }
        ++seconds;
    }
    std::remove(file.c_str());
    benchmark::DoNotOptimize(checksum);
    state.SetBytesProcessed(int64_t(double(samples.secondBytes()) * double(seconds)));
    state.counters["x_realtime"] = benchmark::Counter(double(seconds), benchmark::Counter::kIsRate);
}

void BM_PlaybackKeepingSampleBlocks(benchmark::State& state)
{
    if (!Utils::StreamingMemory::keepSampleBlocks()) {
        state.SkipWithError("the C library refused the memory policy");
        return;
    }
    BM_Playback(state);
}

void BM_Memcpy(benchmark::State& state)
{
    Samples samples;
    const size_t bytes = samples.secondBytes();
    std::vector<uint8_t> from(bytes, 1), to(bytes);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(bytes) * int64_t(state.iterations()));
}

} // namespace

BENCHMARK(BM_Record)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);
BENCHMARK(BM_Playback)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlaybackKeepingSampleBlocks)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK_MAIN();
