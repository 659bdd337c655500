#include "Zerlane/Enums.h"

namespace Zerlane {

void FrameFormat_toResolution(FrameFormat format, int32_t* width, int32_t* height)
{
    int32_t w = 0, h = 0;
    switch (format) {
    case FRAME_FORMAT_QQVGA: w = 160; h = 120; break;
    case FRAME_FORMAT_QVGA: w = 320; h = 240; break;
    case FRAME_FORMAT_VGA: w = 640; h = 480; break;
    case FRAME_FORMAT_HD720: w = 1280; h = 720; break;
    case FRAME_FORMAT_UNKNOWN: break;
    }
    if (width)
        *width = w;
    if (height)
        *height = h;
}

std::string FrameFormat_toString(FrameFormat format)
{
    switch (format) {
    case FRAME_FORMAT_QQVGA: return "QQVGA";
    case FRAME_FORMAT_QVGA: return "QVGA";
    case FRAME_FORMAT_VGA: return "VGA";
    case FRAME_FORMAT_HD720: return "HD720";
    case FRAME_FORMAT_UNKNOWN: break;
    }
    return "Unknown";
}

std::string CompressionType_toString(CompressionType type)
{
    switch (type) {
    case COMPRESSION_TYPE_YUY2: return "YUY2";
    case COMPRESSION_TYPE_NONE: return "Uncompressed";
    }
    return "Unknown";
}

std::string PowerLineFrequency_toString(PowerLineFrequency frequency)
{
    switch (frequency) {
    case POWER_LINE_FREQUENCY_DISABLED: return "Disabled";
    case POWER_LINE_FREQUENCY_50HZ: return "50Hz";
    case POWER_LINE_FREQUENCY_60HZ: return "60Hz";
    }
    return "Unknown";
}

std::string ExposureAuto_toString(ExposureAuto value)
{
    switch (value) {
    case EXPOSURE_AUTO_MANUAL: return "Manual";
    case EXPOSURE_AUTO_APERTURE_PRIORITY: return "Aperture Priority";
    }
    return "Unknown";
}

} // namespace Zerlane
