#pragma once

#include "Zerlane/AudioNode.h"

class BufferData;

// Draws audio samples into an audio buffer's display image: a 1280-column sweep that covers one
// second, each channel in its own band, with the newest columns written at the slot's marker.
class AudioWaveform {
public:
    static constexpr uint32_t ImageWidth = 1280;
    static constexpr uint32_t ImageHeight = 256;

    // Copies the sample into the write slot and draws it. Returns false when the sample is too short
    // to cover one column (nothing is drawn then).
    static bool drawSample(BufferData* buffer, int slot, const Zerlane::AudioNode::NewSampleReceivedData& sample,
                           const Zerlane::AudioNode::Configuration& configuration);

private:
    static void drawColumns(uint32_t* image, uint32_t firstColumn, uint32_t columns, const uint8_t* pcm,
                            uint32_t frames, int channels, int bytesPerSample);
};
