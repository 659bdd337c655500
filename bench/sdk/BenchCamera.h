#pragma once

// A one-camera, one-depth-node driver whose VGA samples with every map a benchmark pushes by hand,
// and the memcpy baseline of the same bytes.

#include "Zerlane/Zerlane.h"
#include "Zerlane/plugin/Driver.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <vector>

namespace BenchCamera {

using namespace Zerlane;

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

inline DepthNode::NewSampleReceivedData makeSample(const std::shared_ptr<const MapBlock>& block)
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

inline bool sharesMaps(const DepthNode::NewSampleReceivedData& s, const MapBlock& block)
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

// Every map of the block, one after the other, into `target`.
inline void copyMaps(const MapBlock& block, char* target)
{
    const auto copy = [&target](const auto& v) {
        const std::size_t n = v.size() * sizeof(v[0]);
        std::memcpy(target, v.data(), n);
        target += n;
    };
    copy(block.phase), copy(block.confidence), copy(block.depth), copy(block.depthFloat);
    copy(block.vertices), copy(block.verticesFloat), copy(block.uv);
}

inline double memcpyNanoseconds(const MapBlock& block)
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

} // namespace BenchCamera
