#pragma once

#include "RecordedDevice.h"

#include <string>
#include <vector>

namespace Zerlane::recording {

// The text forms a recording stores: the description of its cameras (an attachment) and one line per
// sample (a subtitle track) with the exact capture time, the node's configuration and the acceleration.
// Floats are written in hexadecimal so that reading them back gives the same bits. Parsing throws
// Exception naming what is malformed.
class RecordingText {
public:
    struct SampleLine {
        int32_t device = 0;
        int32_t node = 0;
        uint64_t timeOfCapture = 0;
        int32_t maps = 0; // map packets that follow this line for the sample
        PropertyValue configuration;
        float acceleration[3] = {0.f, 0.f, 0.f};
    };

    static std::string describe(const std::vector<RecordedDevice>& devices);
    static std::vector<RecordedDevice> parseDescription(const std::string& text);

    static std::string sampleLine(const SampleLine& line);
    static SampleLine parseSampleLine(const std::string& text);

    static std::string value(const PropertyValue& value);
    static PropertyValue parseValue(PropertyType type, const std::string& text);
};

} // namespace Zerlane::recording
