#include "SampleCodec.h"

#include "FrameWriter.h"
#include "ValueCodec.h"
#include "WireLimits.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Node.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Zerlane::wire {

namespace {

enum MapId : int32_t {
    PHASE = 0,
    CONFIDENCE,
    DEPTH,
    DEPTH_FLOATING_POINT,
    VERTICES,
    VERTICES_FLOATING_POINT,
    UV_MAP,
    COLOR,
    AUDIO,
    MAP_COUNT
};

constexpr std::array<std::size_t, MAP_COUNT> kElementSize {sizeof(int16_t), sizeof(int16_t), sizeof(int16_t),
                                                           sizeof(float),   sizeof(Vertex),  sizeof(FPVertex),
                                                           sizeof(UV),      1,               1};

// Visits every map of a sample with its id: f(id, Pointer<T>&).
template <class F>
void forEachMap(DepthNode::NewSampleReceivedData& s, F&& f)
{
    f(PHASE, s.phaseMap);
    f(CONFIDENCE, s.confidenceMap);
    f(DEPTH, s.depthMap);
    f(DEPTH_FLOATING_POINT, s.depthMapFloatingPoint);
    f(VERTICES, s.vertices);
    f(VERTICES_FLOATING_POINT, s.verticesFloatingPoint);
    f(UV_MAP, s.uvMap);
}
template <class F>
void forEachMap(ColorNode::NewSampleReceivedData& s, F&& f)
{
    f(COLOR, s.colorMap);
}
template <class F>
void forEachMap(AudioNode::NewSampleReceivedData& s, F&& f)
{
    f(AUDIO, s.audioData);
}

NodeKind kindOf(const SampleCodec::Sample& sample)
{
    switch (sample.index()) {
    case 0: return NodeKind::Depth;
    case 1: return NodeKind::Color;
    default: return NodeKind::Audio;
    }
}

constexpr std::size_t kAlignment = 16;

std::size_t aligned(std::size_t offset)
{
    return (offset + kAlignment - 1) / kAlignment * kAlignment;
}

template <class Data>
void fillHeader(SampleHeader& header, const Data& data)
{
    header.set_time_of_capture(data.timeOfCapture);
    header.set_dropped(data.droppedSampleCount);
}

} // namespace

std::shared_ptr<const SampleCodec::Encoded> SampleCodec::encode(uint32_t node, Sample&& sample)
{
    auto encoded = std::make_shared<Encoded>();
    encoded->sample = std::move(sample);
    SampleHeader& header = encoded->header;
    header.set_node(node);
    header.set_kind(static_cast<int32_t>(kindOf(encoded->sample)));
    std::visit(
        [&](auto& data) {
            fillHeader(header, data);
            forEachMap(data, [&](int32_t id, const auto& map) {
                if (!map.data())
                    return;
                const std::size_t bytes = std::size_t(map.size()) * sizeof(*map.data());
                Block& block = *header.add_blocks();
                block.set_map(id);
                block.set_length(static_cast<uint32_t>(bytes));
                encoded->blocks.push_back(iovec {const_cast<void*>(static_cast<const void*>(map.data())), bytes});
                encoded->bytes += bytes;
            });
        },
        encoded->sample);
    if (auto* depth = std::get_if<DepthNode::NewSampleReceivedData>(&encoded->sample)) {
        header.set_ax(depth->acceleration.x);
        header.set_ay(depth->acceleration.y);
        header.set_az(depth->acceleration.z);
        ValueCodec::encode(depth->captureConfiguration, *header.mutable_configuration());
    } else if (auto* color = std::get_if<ColorNode::NewSampleReceivedData>(&encoded->sample)) {
        ValueCodec::encode(color->captureConfiguration, *header.mutable_configuration());
    } else if (auto* audio = std::get_if<AudioNode::NewSampleReceivedData>(&encoded->sample)) {
        ValueCodec::encode(AudioNodeConfiguration {audio->audioFormat}, *header.mutable_configuration());
    }
    return encoded;
}

std::vector<iovec> SampleCodec::buffers(const Encoded& encoded, int32_t dropped, std::string& header,
                                        std::vector<uint32_t>& prefixes)
{
    Envelope envelope;
    SampleHeader& own = *envelope.mutable_sample();
    own = encoded.header;
    own.set_dropped(own.dropped() + dropped);
    header = FrameWriter::frame(envelope);
    prefixes.resize(encoded.blocks.size());
    std::vector<iovec> result;
    result.reserve(1 + 2 * encoded.blocks.size());
    result.push_back(iovec {header.data(), header.size()});
    for (std::size_t i = 0; i < encoded.blocks.size(); ++i) {
        uint8_t bytes[4];
        FrameWriter::encodeLength(static_cast<uint32_t>(encoded.blocks[i].iov_len), bytes);
        std::memcpy(&prefixes[i], bytes, 4);
        result.push_back(iovec {&prefixes[i], 4});
        result.push_back(encoded.blocks[i]);
    }
    return result;
}

SampleCodec::Sample SampleCodec::decode(const SampleHeader& header, FrameReader& reader, Utils::BlockPool& pool)
{
    Sample sample;
    switch (static_cast<NodeKind>(header.kind())) {
    case NodeKind::Depth: sample.emplace<DepthNode::NewSampleReceivedData>(); break;
    case NodeKind::Color: sample.emplace<ColorNode::NewSampleReceivedData>(); break;
    case NodeKind::Audio: sample.emplace<AudioNode::NewSampleReceivedData>(); break;
    default: throw TransportException("a sample of unknown kind " + std::to_string(header.kind()));
    }
    if (header.blocks_size() > static_cast<int>(WireLimits::MAX_BLOCKS))
        throw TransportException("a sample with " + std::to_string(header.blocks_size()) + " maps");

    // Check every declared block before allocating anything.
    std::array<bool, MAP_COUNT> seen {};
    std::size_t total = 0;
    for (const Block& block : header.blocks()) {
        const int32_t id = block.map();
        bool belongs = false;
        std::visit([&](auto& data) { forEachMap(data, [&](int32_t own, auto&) { belongs |= own == id; }); }, sample);
        if (!belongs || seen[id])
            throw TransportException("a sample with an unexpected or repeated map " + std::to_string(id));
        seen[id] = true;
        if (block.length() > WireLimits::MAX_BLOCK_BYTES)
            throw TransportException("a sample map of " + std::to_string(block.length()) + " bytes is above the limit");
        if (block.length() % kElementSize[id] != 0)
            throw TransportException("a sample map whose size is not a whole number of elements");
        total = aligned(total) + block.length();
    }
    if (total > WireLimits::MAX_SAMPLE_BYTES)
        throw TransportException("a sample of " + std::to_string(total) + " bytes is above the limit");

    std::shared_ptr<uint8_t> buffer = pool.acquire(total);
    std::shared_ptr<const void> owner(buffer, buffer.get());
    std::size_t offset = 0;
    for (const Block& block : header.blocks()) {
        offset = aligned(offset);
        uint8_t* at = buffer.get() + offset;
        reader.readBlock(at, block.length());
        offset += block.length();
        std::visit(
            [&](auto& data) {
                forEachMap(data, [&](int32_t id, auto& map) {
                    using T = std::remove_cv_t<std::remove_pointer_t<decltype(map.data())>>;
                    if (id == block.map())
                        map = Pointer<T>(owner, reinterpret_cast<const T*>(at),
                                         static_cast<int32_t>(block.length() / sizeof(T)));
                });
            },
            sample);
    }

    const PropertyValue configuration =
        header.has_configuration() ? ValueCodec::decode(header.configuration()) : PropertyValue {};
    auto wrongConfiguration = [] { throw TransportException("a sample whose configuration does not fit its kind"); };
    if (auto* depth = std::get_if<DepthNode::NewSampleReceivedData>(&sample)) {
        depth->acceleration = Acceleration {header.ax(), header.ay(), header.az()};
        if (header.has_configuration()) {
            if (!std::holds_alternative<DepthNodeConfiguration>(configuration))
                wrongConfiguration();
            depth->captureConfiguration = std::get<DepthNodeConfiguration>(configuration);
        }
    } else if (auto* color = std::get_if<ColorNode::NewSampleReceivedData>(&sample)) {
        if (header.has_configuration()) {
            if (!std::holds_alternative<ColorNodeConfiguration>(configuration))
                wrongConfiguration();
            color->captureConfiguration = std::get<ColorNodeConfiguration>(configuration);
        }
    } else if (auto* audio = std::get_if<AudioNode::NewSampleReceivedData>(&sample)) {
        if (header.has_configuration()) {
            if (!std::holds_alternative<AudioNodeConfiguration>(configuration))
                wrongConfiguration();
            audio->audioFormat = std::get<AudioNodeConfiguration>(configuration).audioFormat;
        }
    }
    std::visit(
        [&](auto& data) {
            data.timeOfCapture = header.time_of_capture();
            data.droppedSampleCount = std::max(header.dropped(), 0);
        },
        sample);
    return sample;
}

} // namespace Zerlane::wire
