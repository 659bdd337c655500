#pragma once

#include "Zerlane/Export.h"

#include <cstdint>
#include <string>

namespace Zerlane {

enum FrameFormat : int32_t {
    FRAME_FORMAT_UNKNOWN = 0,
    FRAME_FORMAT_QQVGA = 1, // 160 x 120
    FRAME_FORMAT_QVGA = 2,  // 320 x 240
    FRAME_FORMAT_VGA = 3,   // 640 x 480
    FRAME_FORMAT_HD720 = 4, // 1280 x 720
};

// Colour payload encoding. Uncompressed colour is B, G, R bytes per pixel.
enum CompressionType : int32_t {
    COMPRESSION_TYPE_YUY2 = 0,
    COMPRESSION_TYPE_NONE = 1,
};

enum PowerLineFrequency : int32_t {
    POWER_LINE_FREQUENCY_DISABLED = 0,
    POWER_LINE_FREQUENCY_50HZ = 1,
    POWER_LINE_FREQUENCY_60HZ = 2,
};

enum ExposureAuto : int32_t {
    EXPOSURE_AUTO_MANUAL = 0,
    EXPOSURE_AUTO_APERTURE_PRIORITY = 1,
};

// Width and height of a frame format; both 0 for an unknown format.
ZERLANE_API void FrameFormat_toResolution(FrameFormat format, int32_t* width, int32_t* height);
ZERLANE_API std::string FrameFormat_toString(FrameFormat format);
ZERLANE_API std::string CompressionType_toString(CompressionType type);
ZERLANE_API std::string PowerLineFrequency_toString(PowerLineFrequency frequency);
ZERLANE_API std::string ExposureAuto_toString(ExposureAuto value);

} // namespace Zerlane
