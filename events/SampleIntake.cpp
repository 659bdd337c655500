#include "events/SampleIntake.h"

#include "camera/BufferData.h"
#include "camera/DepthNodeData.h"
#include "camera/StandardDeviationHistory.h"
#include "events/AudioWaveform.h"
#include "palettes/DepthColorizer.h"

#include <algorithm>
#include <cstring>

namespace {

// What one depth buffer is filled from: the map's bytes and, for the image, how to read them.
struct DepthSource {
    const void* data = nullptr;
    size_t bytes = 0;
    const void* aux = nullptr;
};

// The bytes of one map of the sample, whatever its element type.
template <typename Map>
DepthSource mapSource(const Map& map, const void* aux = nullptr)
{
    return {map.data(), size_t(map.size()) * sizeof(*map.data()), aux};
}

DepthSource depthSourceFor(uint32_t type, const Zerlane::DepthNode::NewSampleReceivedData& sample)
{
    switch (type) {
    case BufferData::Phase:
        return mapSource(sample.phaseMap);
    case BufferData::Confidence:
        return mapSource(sample.confidenceMap);
    case BufferData::Depth:
        return mapSource(sample.depthMap);
    case BufferData::DepthFloatingPoint:
        return mapSource(sample.depthMapFloatingPoint);
    case BufferData::Vertices:
        return mapSource(sample.vertices);
    case BufferData::VerticesFloatingPoint:
        return mapSource(sample.verticesFloatingPoint);
    case BufferData::UV:
        return mapSource(sample.uvMap);
    case BufferData::Combined:
        return mapSource(sample.phaseMap, sample.confidenceMap.data());
    default:
        return {};
    }
}

// A map delivered as three planes (x, y, z) is shown flat by its z plane.
template <class T>
const T* flatPlane(const T* map, size_t elements, size_t pixels)
{
    return elements >= 3 * pixels ? map + 2 * pixels : map;
}

void colorDepthImage(BufferData* buffer, int slot, const DepthSource& source, size_t pixels, const DepthPalette& palette,
                     float range)
{
    DisplayImage& image = buffer->image[slot];
    const int count = int(pixels);
    switch (buffer->type) {
    case BufferData::Phase:
    case BufferData::Confidence:
    case BufferData::Combined:
        DepthColorizer::colorize16(static_cast<const uint16_t*>(source.data), image.words(), count, palette);
        break;
    case BufferData::Depth:
        DepthColorizer::colorizeDepth(flatPlane(static_cast<const int16_t*>(source.data), source.bytes / 2, pixels),
                                      image.words(), count, palette, range);
        break;
    case BufferData::DepthFloatingPoint:
        DepthColorizer::colorizeDepthFloat(flatPlane(static_cast<const float*>(source.data), source.bytes / 4, pixels),
                                           image.words(), count, palette, range);
        break;
    case BufferData::StandardDeviation:
        DepthColorizer::colorizeStandardDeviation(static_cast<const float*>(source.data), image.words(), count, palette,
                                                  range);
        break;
    default:
        return; // the geometry kinds have no image
    }
    image.markChanged();
}

void resizeImageIfNeeded(BufferData* buffer, int slot, uint32_t width, uint32_t height)
{
    DisplayImage& image = buffer->image[slot];
    if (buffer->sizeChanged[slot] || image.width != width || image.height != height) {
        image.resize(width, height);
        buffer->sizeChanged[slot] = false;
    }
}

// One map against its buffer: at most the capacity, at least one plane of the frame (`pixels` counts
// the map's elements per plane).
template <typename Map>
bool mapFits(const char* name, const Map& map, uint32_t type, size_t pixels, std::string* reason)
{
    if (!map.data())
        return true;
    const size_t elementBytes = sizeof(*map.data());
    const size_t bytes = size_t(map.size()) * elementBytes;
    const size_t capacity = BufferData::capacity(type);
    if (pixels * elementBytes > capacity || bytes > capacity) {
        *reason = std::string(name) + " of " + std::to_string(std::max(bytes, pixels * elementBytes))
                  + " bytes exceeds the buffer capacity of " + std::to_string(capacity) + " bytes";
        return false;
    }
    if (size_t(map.size()) < pixels) {
        *reason = std::string(name) + " holds " + std::to_string(map.size()) + " elements, fewer than the "
                  + std::to_string(pixels) + " pixels of the frame";
        return false;
    }
    return true;
}

} // namespace

bool SampleIntake::depthFrameFits(const Zerlane::DepthNode::NewSampleReceivedData& sample, int32_t width,
                                  int32_t height, std::string* reason)
{
    const size_t pixels = size_t(std::max(0, width)) * size_t(std::max(0, height));
    // The standard-deviation history holds frames of the Standard Deviation buffer's size.
    if (pixels * sizeof(float) > BufferData::capacity(BufferData::StandardDeviation)) {
        *reason = "frame of " + std::to_string(width) + " x " + std::to_string(height)
                  + " pixels is larger than the depth buffers (640 x 480)";
        return false;
    }
    return mapFits("phase map", sample.phaseMap, BufferData::Phase, pixels, reason)
           && mapFits("confidence map", sample.confidenceMap, BufferData::Confidence, pixels, reason)
           && mapFits("depth map", sample.depthMap, BufferData::Depth, pixels, reason)
           && mapFits("floating-point depth map", sample.depthMapFloatingPoint, BufferData::DepthFloatingPoint, pixels,
                      reason)
           && mapFits("vertex map", sample.vertices, BufferData::Vertices, pixels, reason)
           && mapFits("floating-point vertex map", sample.verticesFloatingPoint, BufferData::VerticesFloatingPoint,
                      pixels, reason)
           && mapFits("UV map", sample.uvMap, BufferData::UV, pixels, reason);
}

bool SampleIntake::colorFrameFits(const Zerlane::ColorNode::NewSampleReceivedData& sample, int32_t width,
                                  int32_t height, std::string* reason)
{
    // The colour map is counted in bytes: two per pixel in YUY2, three uncompressed.
    const size_t bytesPerPixel = sample.captureConfiguration.compression == Zerlane::COMPRESSION_TYPE_NONE ? 3 : 2;
    const size_t pixels = size_t(std::max(0, width)) * size_t(std::max(0, height));
    return mapFits("colour map", sample.colorMap, BufferData::Color, pixels * bytesPerPixel, reason);
}

void SampleIntake::refuseFrame(BufferData* buffer, int slot)
{
    buffer->width[slot] = 0;
    buffer->height[slot] = 0;
    buffer->noData = true;
}

void SampleIntake::fillDepthBuffer(BufferData* buffer, int slot, const Zerlane::DepthNode::NewSampleReceivedData& sample,
                                   const DepthFrame& frame)
{
    DepthNodeData& node = *frame.node;
    uint32_t w = uint32_t(frame.width);
    uint32_t h = uint32_t(frame.height);
    DepthSource source = depthSourceFor(buffer->type, sample);
    if (buffer->type == BufferData::StandardDeviation) {
        // The statistic of the node's region, as large as the region that fits this frame.
        StandardDeviationHistory::Statistic statistic;
        if (sample.depthMapFloatingPoint.data())
            statistic = StandardDeviationHistory::addFrame(node, sample.depthMapFloatingPoint.data(), frame.width,
                                                           frame.height, frame.sdNumFrames);
        w = uint32_t(std::max(0, statistic.roi.width));
        h = uint32_t(std::max(0, statistic.roi.height));
        source = {statistic.deviation, size_t(w) * h * 4};
    }
    buffer->width[slot] = w;
    buffer->height[slot] = h;
    buffer->noData = source.data == nullptr;
    if (!source.data || w == 0 || h == 0)
        return;
    std::memcpy(buffer->data[slot], source.data, std::min<size_t>(source.bytes, BufferData::capacity(buffer->type)));
    buffer->auxData = source.aux;
    resizeImageIfNeeded(buffer, slot, w, h);
    colorDepthImage(buffer, slot, source, size_t(w) * h, *frame.palette, frame.range);
    ++buffer->frameCount;
}

void SampleIntake::fillColorBuffer(BufferData* buffer, int slot, const Zerlane::ColorNode::NewSampleReceivedData& sample,
                                   int32_t width, int32_t height)
{
    buffer->width[slot] = uint32_t(width);
    buffer->height[slot] = uint32_t(height);
    buffer->noData = sample.colorMap.data() == nullptr;
    if (buffer->noData || width <= 0 || height <= 0)
        return;
    resizeImageIfNeeded(buffer, slot, uint32_t(width), uint32_t(height));
    DisplayImage& image = buffer->image[slot];
    if (sample.captureConfiguration.compression == Zerlane::COMPRESSION_TYPE_NONE)
        image.fillFromBgr(sample.colorMap.data());
    else
        image.fillFromYuy2(sample.colorMap.data());
    ++buffer->frameCount;
}

bool SampleIntake::fillAudioBuffer(BufferData* buffer, int slot, const Zerlane::AudioNode::NewSampleReceivedData& sample,
                                   const Zerlane::AudioNode::Configuration& configuration)
{
    if (sample.audioData.size() == 0)
        return true;
    buffer->noData = sample.audioData.data() == nullptr;
    return buffer->noData || AudioWaveform::drawSample(buffer, slot, sample, configuration);
}
