#pragma once

#include "Zerlane/Zerlane.h"

#include <cstdint>
#include <string>

class BufferData;
class DepthNodeData;
class DepthPalette;

// How one sample fills one buffer's write slot: its data copied into the slot's block and, for the
// kinds with a picture, the slot's image coloured through the palette, converted or drawn. The event
// thread's handlers call these for every buffer of the node once the slots have been flipped and
// stamped; they run on the event thread only and touch nothing but the write slot and the counts.
class SampleIntake {
public:
    // What every buffer of one depth sample is filled with besides the sample itself.
    struct DepthFrame {
        DepthNodeData* node = nullptr;
        int32_t width = 0;
        int32_t height = 0;
        const DepthPalette* palette = nullptr;
        float range = 0.f;
        int sdNumFrames = 0; // frames of the standard-deviation statistics
    };

    // Whether every map of a depth sample fits its buffer's fixed capacity and covers width x height
    // pixels (one plane, or three for the three-plane layouts); when not, `reason` says which map and why.
    static bool depthFrameFits(const Zerlane::DepthNode::NewSampleReceivedData& sample, int32_t width, int32_t height,
                               std::string* reason);
    static bool colorFrameFits(const Zerlane::ColorNode::NewSampleReceivedData& sample, int32_t width, int32_t height,
                               std::string* reason);
    // A refused frame: the slot holds nothing, so no reader uses the frame's size.
    static void refuseFrame(BufferData* buffer, int slot);

    static void fillDepthBuffer(BufferData* buffer, int slot, const Zerlane::DepthNode::NewSampleReceivedData& sample,
                                const DepthFrame& frame);
    static void fillColorBuffer(BufferData* buffer, int slot, const Zerlane::ColorNode::NewSampleReceivedData& sample,
                                int32_t width, int32_t height);
    // False when the sample is too short to cover one column of the waveform: the view has nothing new.
    static bool fillAudioBuffer(BufferData* buffer, int slot, const Zerlane::AudioNode::NewSampleReceivedData& sample,
                                const Zerlane::AudioNode::Configuration& configuration);
};
