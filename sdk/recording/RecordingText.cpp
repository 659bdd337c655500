#include "RecordingText.h"

#include "Zerlane/Exceptions.h"

#include <cerrno>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace Zerlane::recording {

namespace {

constexpr const char* Header = "zerlane-recording 1";

// Strings become one token: every byte outside the printable range, and ' ', '%', ',', as %XX.
std::string encode(const std::string& text)
{
    std::string out = "'";
    for (unsigned char c : text) {
        if (c <= ' ' || c >= 127 || c == '%' || c == ',') {
            char hex[4];
            std::snprintf(hex, sizeof hex, "%%%02X", c);
            out += hex;
        } else {
            out += char(c);
        }
    }
    return out;
}

std::string decode(const std::string& token)
{
    if (token.empty() || token[0] != '\'')
        throw Exception("malformed text value '" + token + "'");
    std::string out;
    for (size_t i = 1; i < token.size(); ++i) {
        if (token[i] != '%') {
            out += token[i];
            continue;
        }
        if (i + 2 >= token.size())
            throw Exception("malformed text value '" + token + "'");
        char* end = nullptr;
        const std::string hex = token.substr(i + 1, 2);
        const long c = std::strtol(hex.c_str(), &end, 16);
        if (end != hex.c_str() + 2)
            throw Exception("malformed text value '" + token + "'");
        out += char(c);
        i += 2;
    }
    return out;
}

std::string floatText(float value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%a", double(value));
    return text;
}

int64_t integer(const std::string& token)
{
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(token.c_str(), &end, 10);
    if (token.empty() || *end || errno)
        throw Exception("malformed number '" + token + "'");
    return value;
}

int32_t int32(const std::string& token)
{
    const int64_t value = integer(token);
    if (value < INT32_MIN || value > INT32_MAX)
        throw Exception("number out of range '" + token + "'");
    return int32_t(value);
}

float floating(const std::string& token)
{
    char* end = nullptr;
    const float value = std::strtof(token.c_str(), &end);
    if (token.empty() || *end)
        throw Exception("malformed number '" + token + "'");
    return value;
}

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::string part;
    std::istringstream in(text);
    while (std::getline(in, part, separator))
        parts.push_back(part);
    if (!text.empty() && text.back() == separator)
        parts.emplace_back();
    return parts;
}

std::vector<std::string> fields(const std::string& token, size_t count)
{
    std::vector<std::string> parts = split(token, ',');
    if (parts.size() != count)
        throw Exception("malformed configuration '" + token + "'");
    return parts;
}

std::vector<std::string> words(const std::string& line)
{
    std::vector<std::string> out;
    std::istringstream in(line);
    std::string word;
    while (in >> word)
        out.push_back(word);
    return out;
}

void need(const std::vector<std::string>& w, size_t count, const std::string& line)
{
    if (w.size() != count)
        throw Exception("malformed line '" + line.substr(0, 80) + "'");
}

PropertyType configurationType(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Depth:
        return PropertyType::DepthConfiguration;
    case NodeKind::Color:
        return PropertyType::ColorConfiguration;
    case NodeKind::Audio:
        return PropertyType::AudioConfiguration;
    default:
        throw Exception("a node of kind " + std::to_string(int(kind)) + " has no configurations");
    }
}

PropertyType propertyType(const std::string& token)
{
    const int32_t type = int32(token);
    if (type < 0 || type > int32_t(PropertyType::AudioConfiguration))
        throw Exception("unknown property type " + token);
    return PropertyType(type);
}

std::string flags(const plugin::PropertySpec& spec)
{
    return std::to_string(int(spec.readOnly) | int(spec.hidden) << 1 | int(spec.requiresControl) << 2);
}

RecordedDevice::Property parseProperty(const std::vector<std::string>& w, const std::string& line)
{
    need(w, 5, line);
    RecordedDevice::Property property;
    property.spec.type = propertyType(w[1]);
    const int32_t f = int32(w[2]);
    property.spec.readOnly = f & 1;
    property.spec.hidden = f & 2;
    property.spec.requiresControl = f & 4;
    property.spec.name = decode(w[3]);
    property.value = RecordingText::parseValue(property.spec.type, w[4]);
    return property;
}

std::string propertyLine(const char* tag, const RecordedDevice::Property& property)
{
    return std::string(tag) + " " + std::to_string(int(property.spec.type)) + " " + flags(property.spec) + " "
           + encode(property.spec.name) + " " + RecordingText::value(property.value) + "\n";
}

} // namespace

std::string RecordingText::value(const PropertyValue& value)
{
    struct Writer {
        std::string operator()(bool v) const { return v ? "1" : "0"; }
        std::string operator()(int32_t v) const { return std::to_string(v); }
        std::string operator()(float v) const { return floatText(v); }
        std::string operator()(const std::string& v) const { return encode(v); }
        std::string operator()(ExposureAuto v) const { return std::to_string(int(v)); }
        std::string operator()(const DepthNodeConfiguration& c) const
        {
            return std::to_string(c.frameFormat) + "," + std::to_string(c.frameRate) + "," + std::to_string(c.mode)
                   + "," + (c.saturation ? "1" : "0");
        }
        std::string operator()(const ColorNodeConfiguration& c) const
        {
            return std::to_string(c.frameFormat) + "," + std::to_string(c.compression) + ","
                   + std::to_string(c.frameRate) + "," + std::to_string(c.powerLineFrequency);
        }
        std::string operator()(const AudioNodeConfiguration& c) const
        {
            return std::to_string(c.audioFormat.sampleRate) + "," + std::to_string(c.audioFormat.bitsPerSample) + ","
                   + std::to_string(c.audioFormat.nbChannels);
        }
    };
    return std::visit(Writer {}, value);
}

PropertyValue RecordingText::parseValue(PropertyType type, const std::string& text)
{
    switch (type) {
    case PropertyType::Bool:
        return integer(text) != 0;
    case PropertyType::Int:
        return int32(text);
    case PropertyType::Float:
        return floating(text);
    case PropertyType::String:
        return decode(text);
    case PropertyType::ExposureAuto:
        return ExposureAuto(int32(text));
    case PropertyType::DepthConfiguration: {
        const auto f = fields(text, 4);
        return DepthNodeConfiguration {FrameFormat(int32(f[0])), int32(f[1]), CameraMode(int32(f[2])), int32(f[3]) != 0};
    }
    case PropertyType::ColorConfiguration: {
        const auto f = fields(text, 4);
        return ColorNodeConfiguration {FrameFormat(int32(f[0])), CompressionType(int32(f[1])), int32(f[2]),
                                       PowerLineFrequency(int32(f[3]))};
    }
    case PropertyType::AudioConfiguration: {
        const auto f = fields(text, 3);
        AudioNodeConfiguration c;
        c.audioFormat = {int32(f[0]), int32(f[1]), int32(f[2])};
        return c;
    }
    }
    throw Exception("unknown property type");
}

std::string RecordingText::describe(const std::vector<RecordedDevice>& devices)
{
    std::string text = std::string(Header) + "\n";
    for (const RecordedDevice& device : devices) {
        text += "device " + std::to_string(device.model) + " " + std::to_string(device.usbBackendVersion) + " "
                + std::to_string(device.tofControllerVersion) + " " + encode(device.serial) + " "
                + encode(device.typeName) + "\n";
        for (const RecordedDevice::Property& property : device.properties)
            text += propertyLine("dprop", property);
        for (const RecordedDevice::Node& node : device.nodes) {
            text += "node " + std::to_string(int(node.kind)) + " " + std::to_string(node.vid) + " "
                    + std::to_string(node.pid) + " " + std::to_string(node.revision) + " "
                    + std::to_string(node.mediaInterface) + " " + floatText(node.range) + " " + encode(node.serial)
                    + " " + encode(node.typeName) + "\n";
            for (const RecordedDevice::Property& property : node.properties)
                text += propertyLine("nprop", property);
            for (const PropertyValue& configuration : node.configurations)
                text += "offer " + value(configuration) + "\n";
            text += "current " + value(node.configuration) + "\n";
        }
    }
    return text;
}

std::vector<RecordedDevice> RecordingText::parseDescription(const std::string& text)
{
    std::vector<RecordedDevice> devices;
    std::istringstream in(text);
    std::string line;
    if (!std::getline(in, line) || line != Header)
        throw Exception("the description does not start with '" + std::string(Header) + "'");
    while (std::getline(in, line)) {
        const std::vector<std::string> w = words(line);
        if (w.empty())
            continue;
        if (w[0] == "device") {
            need(w, 6, line);
            RecordedDevice device;
            device.model = int32(w[1]);
            device.usbBackendVersion = int32(w[2]);
            device.tofControllerVersion = int32(w[3]);
            device.serial = decode(w[4]);
            device.typeName = decode(w[5]);
            devices.push_back(std::move(device));
            continue;
        }
        if (devices.empty())
            throw Exception("'" + w[0] + "' before the first device");
        RecordedDevice& device = devices.back();
        if (w[0] == "dprop") {
            device.properties.push_back(parseProperty(w, line));
        } else if (w[0] == "node") {
            need(w, 9, line);
            RecordedDevice::Node node;
            const int32_t kind = int32(w[1]);
            if (kind < int32_t(NodeKind::Depth) || kind > int32_t(NodeKind::Audio))
                throw Exception("node of unknown kind " + w[1]);
            node.kind = NodeKind(kind);
            node.vid = int32(w[2]);
            node.pid = int32(w[3]);
            node.revision = int32(w[4]);
            node.mediaInterface = int32(w[5]);
            node.range = floating(w[6]);
            node.serial = decode(w[7]);
            node.typeName = decode(w[8]);
            device.nodes.push_back(std::move(node));
        } else if (device.nodes.empty()) {
            throw Exception("'" + w[0] + "' before the first node");
        } else if (w[0] == "nprop") {
            device.nodes.back().properties.push_back(parseProperty(w, line));
        } else if (w[0] == "offer" || w[0] == "current") {
            need(w, 2, line);
            RecordedDevice::Node& node = device.nodes.back();
            PropertyValue configuration = parseValue(configurationType(node.kind), w[1]);
            if (w[0] == "offer") {
                node.configurations.push_back(configuration);
            } else {
                node.configuration = configuration;
            }
        } else {
            throw Exception("unknown entry '" + w[0] + "'");
        }
    }
    for (const RecordedDevice& device : devices)
        for (const RecordedDevice::Node& node : device.nodes)
            if (node.configuration.index() != size_t(configurationType(node.kind)))
                throw Exception("node " + node.serial + " has no current configuration");
    return devices;
}

std::string RecordingText::sampleLine(const SampleLine& line)
{
    return std::to_string(line.device) + " " + std::to_string(line.node) + " " + std::to_string(line.timeOfCapture)
           + " " + std::to_string(line.maps) + " " + std::to_string(line.configuration.index()) + " "
           + value(line.configuration) + " " + floatText(line.acceleration[0]) + " " + floatText(line.acceleration[1])
           + " " + floatText(line.acceleration[2]);
}

RecordingText::SampleLine RecordingText::parseSampleLine(const std::string& text)
{
    const std::vector<std::string> w = words(text);
    need(w, 9, text);
    SampleLine line;
    line.device = int32(w[0]);
    line.node = int32(w[1]);
    const int64_t time = integer(w[2]);
    if (time < 0)
        throw Exception("negative capture time " + w[2]);
    line.timeOfCapture = uint64_t(time);
    line.maps = int32(w[3]);
    const PropertyType type = propertyType(w[4]);
    if (type < PropertyType::DepthConfiguration)
        throw Exception("sample line without a configuration");
    line.configuration = parseValue(type, w[5]);
    for (int i = 0; i < 3; ++i)
        line.acceleration[i] = floating(w[6 + i]);
    return line;
}

} // namespace Zerlane::recording
