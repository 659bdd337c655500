#pragma once

#include "Zerlane/Enums.h"

#include <cstdint>

namespace Zerlane {

enum CameraMode : int32_t {
    CAMERA_MODE_CLOSE_RANGE = 0,
    CAMERA_MODE_LONG_RANGE = 1,
};

// Acceleration in units of 9.81 m/s^2, camera frame (x right, y down, z forward).
struct Acceleration {
    float x = 0.f, y = 0.f, z = 0.f;
};

struct DepthNodeConfiguration {
    FrameFormat frameFormat = FRAME_FORMAT_UNKNOWN;
    int32_t frameRate = 0;
    CameraMode mode = CAMERA_MODE_CLOSE_RANGE;
    bool saturation = false;

    bool operator==(const DepthNodeConfiguration&) const = default;
};

struct ColorNodeConfiguration {
    FrameFormat frameFormat = FRAME_FORMAT_UNKNOWN;
    CompressionType compression = COMPRESSION_TYPE_YUY2;
    int32_t frameRate = 0;
    PowerLineFrequency powerLineFrequency = POWER_LINE_FREQUENCY_DISABLED;

    bool operator==(const ColorNodeConfiguration&) const = default;
};

struct AudioFormat {
    int32_t sampleRate = 0;
    int32_t bitsPerSample = 0;
    int32_t nbChannels = 0;

    bool operator==(const AudioFormat&) const = default;
};

struct AudioNodeConfiguration {
    AudioFormat audioFormat;

    bool operator==(const AudioNodeConfiguration&) const = default;
};

} // namespace Zerlane
