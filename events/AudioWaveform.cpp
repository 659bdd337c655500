#include "events/AudioWaveform.h"

#include "camera/BufferData.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint32_t Background = 0xFF201A18; // A, B, G, R: a dark blue-grey
constexpr uint32_t Midline = 0xFF504840;
constexpr uint32_t ChannelColors[2] = {0xFF60E070, 0xFF40A0F0}; // green, orange

int readSample(const uint8_t* pcm, int bytesPerSample)
{
    if (bytesPerSample == 1)
        return (int(pcm[0]) - 128) << 8; // 8-bit PCM is unsigned
    return int16_t(uint16_t(pcm[0]) | uint16_t(pcm[1]) << 8);
}

} // namespace

bool AudioWaveform::drawSample(BufferData* buffer, int slot, const Zerlane::AudioNode::NewSampleReceivedData& sample,
                               const Zerlane::AudioNode::Configuration& configuration)
{
    const Zerlane::AudioFormat& format = sample.audioFormat;
    const int64_t bitsPerSecond = int64_t(format.bitsPerSample) * format.nbChannels * format.sampleRate;
    const size_t bytes = std::min<size_t>({size_t(std::max<int64_t>(0, bitsPerSecond / 8 / 20)), 192000,
                                           size_t(sample.audioData.size())});
    std::memcpy(buffer->data[slot], sample.audioData.data(), bytes);

    DisplayImage& image = buffer->image[slot];
    if (buffer->sizeChanged[slot]) {
        image.resize(ImageWidth, ImageHeight);
        buffer->sizeChanged[slot] = false;
    }
    const Zerlane::AudioFormat& current = configuration.audioFormat;
    const int bytesPerFrame = current.nbChannels * current.bitsPerSample / 8;
    if (bytesPerFrame <= 0 || current.sampleRate <= 0)
        return false;
    const uint32_t frames = uint32_t(sample.audioData.size() / bytesPerFrame);
    const uint32_t columns = uint32_t(uint64_t(frames) * ImageWidth / uint32_t(current.sampleRate));
    if (columns == 0)
        return false;

    // Start from the picture of the previous sample, then draw the new columns after its marker.
    const int other = 1 - slot;
    const DisplayImage& previous = buffer->image[other];
    auto* pixels = reinterpret_cast<uint32_t*>(image.pixels);
    const size_t imageWords = size_t(ImageWidth) * ImageHeight;
    if (previous.width == ImageWidth && previous.height == ImageHeight)
        std::memcpy(pixels, previous.pixels, imageWords * 4);
    else
        std::fill(pixels, pixels + imageWords, Background);
    const uint32_t first = buffer->audioMarker[other] % ImageWidth;
    drawColumns(pixels, first, std::min(columns, ImageWidth), sample.audioData.data(),
                std::min<uint32_t>(frames, uint32_t(bytes / bytesPerFrame)), current.nbChannels, current.bitsPerSample / 8);
    buffer->audioMarker[slot] = (first + columns) % ImageWidth;
    image.markChanged();
    ++buffer->frameCount;
    return true;
}

void AudioWaveform::drawColumns(uint32_t* image, uint32_t firstColumn, uint32_t columns, const uint8_t* pcm,
                                uint32_t frames, int channels, int bytesPerSample)
{
    const int bands = channels >= 2 ? 2 : 1;
    const int bandHeight = int(ImageHeight) / bands;
    const int bytesPerFrame = channels * bytesPerSample;
    for (uint32_t c = 0; c < columns; ++c) {
        const uint32_t x = (firstColumn + c) % ImageWidth;
        for (uint32_t y = 0; y < ImageHeight; ++y)
            image[y * ImageWidth + x] = Background;
        const uint32_t begin = uint32_t(uint64_t(c) * frames / columns);
        const uint32_t end = std::max(begin + 1, uint32_t(uint64_t(c + 1) * frames / columns));
        for (int band = 0; band < bands; ++band) {
            int low = 32767, high = -32768;
            for (uint32_t f = begin; f < end && f < frames; ++f) {
                const int value = readSample(pcm + size_t(f) * bytesPerFrame + size_t(band) * bytesPerSample, bytesPerSample);
                low = std::min(low, value);
                high = std::max(high, value);
            }
            if (low > high)
                continue;
            const int middle = band * bandHeight + bandHeight / 2;
            image[uint32_t(middle) * ImageWidth + x] = Midline;
            const int top = middle - high * (bandHeight / 2 - 1) / 32768;
            const int bottom = middle - low * (bandHeight / 2 - 1) / 32768;
            for (int y = std::max(band * bandHeight, top); y <= std::min((band + 1) * bandHeight - 1, bottom); ++y)
                image[uint32_t(y) * ImageWidth + x] = ChannelColors[band];
        }
    }
}
