#pragma once

extern "C" {
#include <libavutil/log.h>
}

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Zerlane::recording {

// The tracks of a recording. Depth and the active-brightness image use the layout other depth-camera
// recordings use (16-bit big-endian grey raw video, FourCC b16g, titled DEPTH and IR; colour titled COLOR,
// MJPEG or raw), so files of those cameras open too. The remaining maps are our own tracks: 8-bit grey
// uncompressed video (Y800) whose rows hold the map's elements byte for byte (a row of a 640-pixel vertex
// map is 640 x 6 bytes, so 3840 "pixels"). SAMPLES is a text track with one line per sample
// (exact capture time in microseconds, configuration, acceleration), since Matroska block times are only
// milliseconds. Calibration and our description of the cameras are attachments.
class RecordingLayout {
public:
    enum class Role {
        Ignored,  // a track of a known layout that we do not play (the capture's IMU)
        Depth,    // depth map, millimetres
        Confidence, // active brightness ("IR")
        Phase,
        DepthFloatingPoint,
        Vertices,
        VerticesFloatingPoint,
        Uv,
        Color,
        Audio,
        Samples,
    };

    // Track titles.
    static constexpr const char* DepthTitle = "DEPTH";
    static constexpr const char* ConfidenceTitle = "IR";
    static constexpr const char* ColorTitle = "COLOR";
    static constexpr const char* ImuTitle = "IMU";
    static constexpr const char* AudioTitle = "AUDIO";
    static constexpr const char* SamplesTitle = "ZERLANE_SAMPLES";
    static constexpr const char* PhaseTitle = "ZERLANE_PHASE";
    static constexpr const char* DepthFloatingPointTitle = "ZERLANE_DEPTH_FLOAT";
    static constexpr const char* VerticesTitle = "ZERLANE_VERTICES";
    static constexpr const char* VerticesFloatingPointTitle = "ZERLANE_VERTICES_FLOAT";
    static constexpr const char* UvTitle = "ZERLANE_UV";

    // Track tags: which recorded device and node a track belongs to, and how many planes its map has.
    static constexpr const char* DeviceTag = "ZERLANE_DEVICE";
    static constexpr const char* NodeTag = "ZERLANE_NODE";
    static constexpr const char* PlanesTag = "ZERLANE_PLANES";
    // Attachments.
    static constexpr const char* DescriptionFile = "zerlane-description.txt";
    static constexpr const char* CalibrationFile = "calibration.json";
    // File tags of the capture layout we read.
    static constexpr const char* SerialTag = "K4A_DEVICE_SERIAL_NUMBER";

    static Role roleOfTitle(const std::string& title)
    {
        static const struct {
            const char* title;
            Role role;
        } roles[] = {{DepthTitle, Role::Depth},
                     {ConfidenceTitle, Role::Confidence},
                     {ColorTitle, Role::Color},
                     {ImuTitle, Role::Ignored},
                     {AudioTitle, Role::Audio},
                     {SamplesTitle, Role::Samples},
                     {PhaseTitle, Role::Phase},
                     {DepthFloatingPointTitle, Role::DepthFloatingPoint},
                     {VerticesTitle, Role::Vertices},
                     {VerticesFloatingPointTitle, Role::VerticesFloatingPoint},
                     {UvTitle, Role::Uv}};
        for (const auto& entry : roles)
            if (title == entry.title)
                return entry.role;
        throw std::invalid_argument(title);
    }

    // FFmpeg's own messages go to stderr; ours say the same with the file name, as exceptions and log
    // lines. A program that chose FFmpeg's log level itself keeps its choice.
    static void quietFfmpeg()
    {
        if (av_log_get_level() == AV_LOG_INFO)
            av_log_set_level(AV_LOG_FATAL);
    }

    // Bytes of one element of a depth node's map.
    static int elementBytes(Role role)
    {
        switch (role) {
        case Role::Depth:
        case Role::Confidence:
        case Role::Phase:
            return 2;
        case Role::DepthFloatingPoint:
            return 4;
        case Role::Vertices:
            return 6;
        case Role::VerticesFloatingPoint:
            return 12;
        case Role::Uv:
            return 8;
        default:
            return 0;
        }
    }
};

} // namespace Zerlane::recording
