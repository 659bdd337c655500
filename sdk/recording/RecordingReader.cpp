#include "RecordingReader.h"

#include "ColorDecoder.h"
#include "KinectCalibration.h"
#include "RecordingText.h"

#include "Zerlane/Exceptions.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/error.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Zerlane::recording {

namespace {

using Role = RecordingLayout::Role;

constexpr int MaxSide = 8192; // no camera image is larger; anything above is a damaged header

std::string errorText(int error)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return text;
}

std::string tagOf(const AVDictionary* metadata, const char* key)
{
    const AVDictionaryEntry* entry = av_dict_get(metadata, key, nullptr, 0);
    return entry && entry->value ? entry->value : std::string();
}

int intTag(const AVDictionary* metadata, const char* key, const std::string& file)
{
    const std::string text = tagOf(metadata, key);
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end || value < 0 || value > 1000)
        throw Exception(file + ": a track has no valid " + key + " tag");
    return int(value);
}

// Shared memory for one map of a sample.
template <class T>
Pointer<T> newMap(size_t elements, T** data)
{
    auto block = std::shared_ptr<T[]>(new T[elements]);
    *data = block.get();
    return Pointer<T>(std::shared_ptr<const void>(block, block.get()), block.get(), int32_t(elements));
}

void swapBytes16(void* data, size_t bytes)
{
    auto* words = static_cast<uint16_t*>(data);
    for (size_t i = 0; i < bytes / 2; ++i)
        words[i] = uint16_t(words[i] << 8 | words[i] >> 8);
}

// The packet's own memory becomes the map (no copy): the packet is moved into the map's owner. 16-bit
// big-endian maps are turned to host order in place. A packet whose data is not aligned for the element
// type, or shared, is copied first.
template <class T>
Pointer<T> packetMap(AVPacket& packet, bool swap16)
{
    AVPacket* ref = av_packet_alloc();
    if (!ref)
        throw std::bad_alloc();
    av_packet_move_ref(ref, &packet);
    std::shared_ptr<AVPacket> owner(ref, [](AVPacket* p) { av_packet_free(&p); });
    const bool aligned = reinterpret_cast<uintptr_t>(ref->data) % alignof(T) == 0;
    if (!aligned || av_packet_make_writable(ref) < 0 || reinterpret_cast<uintptr_t>(ref->data) % alignof(T) != 0) {
        T* copy = nullptr;
        Pointer<T> map = newMap<T>(size_t(ref->size) / sizeof(T), &copy);
        std::memcpy(copy, ref->data, size_t(ref->size) / sizeof(T) * sizeof(T));
        if (swap16)
            swapBytes16(copy, size_t(ref->size));
        return map;
    }
    if (swap16)
        swapBytes16(ref->data, size_t(ref->size));
    const auto* data = reinterpret_cast<const T*>(ref->data);
    return Pointer<T>(std::shared_ptr<const void>(owner, data), data, int32_t(size_t(ref->size) / sizeof(T)));
}

RecordedDevice::Property property(const std::string& name, PropertyValue value, bool readOnly, bool requiresControl)
{
    RecordedDevice::Property p;
    p.spec.name = name;
    p.spec.type = PropertyType(value.index());
    p.spec.readOnly = readOnly;
    p.spec.requiresControl = requiresControl;
    p.value = std::move(value);
    return p;
}

int32_t frameRateOf(const AVStream* stream)
{
    const AVRational rate = stream->avg_frame_rate.num > 0 ? stream->avg_frame_rate : stream->r_frame_rate;
    if (rate.num <= 0 || rate.den <= 0)
        return 30;
    const double fps = av_q2d(rate);
    return fps >= 1 && fps <= 1000 ? int32_t(std::lround(fps)) : 30;
}

} // namespace

RecordingReader::RecordingReader(const std::string& file) : m_file(file)
{
    try {
        open();
    } catch (...) {
        close(); // no destructor runs for a constructor that throws
        throw;
    }
}

RecordingReader::~RecordingReader()
{
    close();
}

void RecordingReader::fail(const std::string& what) const
{
    throw Exception(m_file + ": " + what);
}

void RecordingReader::close()
{
    av_packet_free(&m_packet);
    avformat_close_input(&m_format);
    m_pending.clear();
    m_ready.clear();
    m_captureDepth.reset();
}

void RecordingReader::open()
{
    RecordingLayout::quietFfmpeg();
    const AVInputFormat* matroska = av_find_input_format("matroska");
    AVDictionary* options = nullptr;
    int error = avformat_open_input(&m_format, m_file.c_str(), matroska, &options);
    av_dict_free(&options);
    if (error < 0) {
        if (error == AVERROR(ENOENT) || error == AVERROR(EACCES))
            fail("cannot open the recording: " + errorText(error));
        fail("not a Matroska recording (" + errorText(error) + ")");
    }
    m_packet = av_packet_alloc();
    if (!m_packet)
        fail("out of memory");

    std::string description, calibration;
    bool hasDescription = false;
    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        const AVStream* stream = m_format->streams[i];
        if (stream->codecpar->codec_type != AVMEDIA_TYPE_ATTACHMENT)
            continue;
        const std::string name = tagOf(stream->metadata, "filename");
        const std::string content(reinterpret_cast<const char*>(stream->codecpar->extradata),
                                  size_t(std::max(0, stream->codecpar->extradata_size)));
        if (name == RecordingLayout::DescriptionFile) {
            description = content;
            hasDescription = true;
        } else if (name == RecordingLayout::CalibrationFile) {
            calibration = content;
        }
    }
    const size_t devicesBefore = m_devices.size();
    const bool reopening = devicesBefore > 0;
    m_tracks.clear();
    m_warnings.clear();
    m_capture = !hasDescription;
    if (m_capture) {
        if (!calibration.empty()) {
            try {
                m_calibration = std::make_unique<KinectCalibration>(KinectCalibration::parse(calibration));
            } catch (const Exception& e) {
                m_calibration.reset();
                m_warnings.push_back(std::string("calibration not used: ") + e.what());
            }
        }
        describeCapture();
    } else {
        describeOwnRecording(description);
    }
    if (reopening && m_devices.size() != devicesBefore) {
        m_devices.resize(devicesBefore);
        fail("the file changed while it was played");
    }
}

void RecordingReader::describeOwnRecording(const std::string& description)
{
    std::vector<RecordedDevice> devices;
    try {
        devices = RecordingText::parseDescription(description);
    } catch (const Exception& e) {
        fail(std::string("the description of the cameras is damaged: ") + e.what());
    }
    if (devices.empty())
        fail("the recording describes no camera");
    if (m_devices.empty())
        m_devices = std::move(devices);
    for (unsigned i = 0; i < m_format->nb_streams; ++i)
        if (m_format->streams[i]->codecpar->codec_type != AVMEDIA_TYPE_ATTACHMENT)
            addTrack(int(i));
    bool any = false;
    for (const auto& [index, track] : m_tracks)
        any = any || track.role == Role::Samples;
    if (!any)
        fail("the recording has no sample track");
}

void RecordingReader::addTrack(int index)
{
    const AVStream* stream = m_format->streams[index];
    Track track;
    track.title = tagOf(stream->metadata, "title");
    try {
        track.role = RecordingLayout::roleOfTitle(track.title);
    } catch (const std::invalid_argument&) {
        m_warnings.push_back("track " + std::to_string(index) + " '" + track.title
                             + "' is not part of the recording layout; skipped");
        return;
    }
    if (track.role == Role::Ignored)
        return;
    track.device = intTag(stream->metadata, RecordingLayout::DeviceTag, m_file);
    track.node = intTag(stream->metadata, RecordingLayout::NodeTag, m_file);
    if (size_t(track.device) >= m_devices.size() || size_t(track.node) >= m_devices[size_t(track.device)].nodes.size())
        fail("track '" + track.title + "' belongs to a camera the recording does not describe");
    const RecordedDevice::Node& node = m_devices[size_t(track.device)].nodes[size_t(track.node)];
    const AVCodecParameters* parameters = stream->codecpar;
    const std::string name = "track '" + track.title + "' of node " + node.serial;
    int32_t width = 0, height = 0;
    if (const int bytes = RecordingLayout::elementBytes(track.role)) {
        const auto* configuration = std::get_if<DepthNodeConfiguration>(&node.configuration);
        if (node.kind != NodeKind::Depth || !configuration)
            fail(name + " is a depth map of a node that is not a depth node");
        FrameFormat_toResolution(configuration->frameFormat, &width, &height);
        const std::string planesText = tagOf(stream->metadata, RecordingLayout::PlanesTag);
        const int planes = planesText == "3" ? 3 : 1;
        track.width = track.role == Role::Depth || track.role == Role::Confidence ? width : width * bytes;
        track.height = height * planes;
        track.frameBytes = size_t(width) * size_t(height) * size_t(planes) * size_t(bytes);
    } else if (track.role == Role::Color) {
        const auto* configuration = std::get_if<ColorNodeConfiguration>(&node.configuration);
        if (node.kind != NodeKind::Color || !configuration)
            fail(name + " is colour of a node that is not a colour node");
        FrameFormat_toResolution(configuration->frameFormat, &width, &height);
        track.width = width;
        track.height = height;
        track.frameBytes =
            size_t(width) * size_t(height) * (configuration->compression == COMPRESSION_TYPE_NONE ? 3 : 2);
    } else if (track.role == Role::Audio) {
        if (node.kind != NodeKind::Audio)
            fail(name + " is audio of a node that is not an audio node");
    }
    if (track.frameBytes
        && (parameters->codec_type != AVMEDIA_TYPE_VIDEO || parameters->width != track.width
            || parameters->height != track.height))
        fail(name + " holds " + std::to_string(parameters->width) + " x " + std::to_string(parameters->height)
             + " frames where the node's configuration needs " + std::to_string(track.width) + " x "
             + std::to_string(track.height));
    if (track.frameBytes == 0 && RecordingLayout::elementBytes(track.role))
        fail(name + " has an empty frame format");
    m_tracks[index] = track;
}

void RecordingReader::describeCapture()
{
    int depthIndex = -1, irIndex = -1, colorIndex = -1;
    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        const AVStream* stream = m_format->streams[i];
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_ATTACHMENT)
            continue;
        const std::string title = tagOf(stream->metadata, "title");
        if (title == RecordingLayout::DepthTitle)
            depthIndex = int(i);
        else if (title == RecordingLayout::ConfidenceTitle)
            irIndex = int(i);
        else if (title == RecordingLayout::ColorTitle)
            colorIndex = int(i);
        else if (title != RecordingLayout::ImuTitle)
            m_warnings.push_back("track " + std::to_string(i) + " '" + title
                                 + "' is not part of the recording layout; skipped");
    }
    if (depthIndex < 0)
        fail("no camera description and no DEPTH track: not a depth-camera recording");

    auto rawSize = [this](int index, const char* title, int* width, int* height) {
        const AVCodecParameters* p = m_format->streams[index]->codecpar;
        if (p->codec_type != AVMEDIA_TYPE_VIDEO || p->codec_id != AV_CODEC_ID_RAWVIDEO || p->width <= 0
            || p->height <= 0 || p->width > MaxSide || p->height > MaxSide)
            fail(std::string("the ") + title + " track is not 16-bit raw video of a plausible size");
        *width = p->width;
        *height = p->height;
    };
    rawSize(depthIndex, "DEPTH", &m_fullWidth, &m_fullHeight);
    // The largest frame format that fits, cut from the centre.
    const FrameFormat formats[] = {FRAME_FORMAT_VGA, FRAME_FORMAT_QVGA, FRAME_FORMAT_QQVGA};
    FrameFormat format = FRAME_FORMAT_UNKNOWN;
    for (FrameFormat candidate : formats) {
        int32_t w = 0, h = 0;
        FrameFormat_toResolution(candidate, &w, &h);
        if (w <= m_fullWidth && h <= m_fullHeight) {
            format = candidate;
            m_width = w;
            m_height = h;
            break;
        }
    }
    if (format == FRAME_FORMAT_UNKNOWN)
        fail("the depth image of " + std::to_string(m_fullWidth) + " x " + std::to_string(m_fullHeight)
             + " is smaller than any frame format");
    m_column0 = (m_fullWidth - m_width) / 2;
    m_row0 = (m_fullHeight - m_height) / 2;
    const std::string serial = tagOf(m_format->metadata, RecordingLayout::SerialTag);

    RecordedDevice device;
    device.serial = serial.empty() ? "unknown" : serial;
    const std::string title = tagOf(m_format->metadata, "title");
    device.typeName = title.empty() ? "Recorded camera" : title;

    RecordedDevice::Node depth;
    depth.kind = NodeKind::Depth;
    depth.typeName = device.typeName + " depth";
    depth.serial = device.serial;
    depth.range = 4.f; // the capture does not say; depth cameras of this kind reach about 4 m
    const DepthNodeConfiguration depthConfiguration {format, frameRateOf(m_format->streams[depthIndex]),
                                                     CAMERA_MODE_CLOSE_RANGE, false};
    for (const char* name : {"enablePhaseMap", "enableConfidenceMap", "enableDepthMap", "enableDepthMapFloatingPoint",
                             "enableVertices", "enableVerticesFloatingPoint", "enableUvMap"})
        depth.properties.push_back(property(name, false, false, false));
    depth.properties.push_back(property("depthMap3Planes", false, true, false));
    depth.properties.push_back(property("depthMapFloatingPoint3Planes", false, true, false));
    depth.properties.push_back(property("range", depth.range, true, true));
    depth.properties.push_back(property("configuration", depthConfiguration, false, true));
    depth.configurations = {depthConfiguration};
    depth.configuration = depthConfiguration;
    device.nodes.push_back(depth);
    m_tracks[depthIndex] = Track {Role::Depth, "DEPTH", 0, 0, m_fullWidth, m_fullHeight,
                                  size_t(m_fullWidth) * size_t(m_fullHeight) * 2};
    m_captureDepthTracks = 1;
    if (irIndex >= 0) {
        int w = 0, h = 0;
        rawSize(irIndex, "IR", &w, &h);
        if (w != m_fullWidth || h != m_fullHeight)
            fail("the IR track's " + std::to_string(w) + " x " + std::to_string(h)
                 + " frames do not match the DEPTH track's");
        m_tracks[irIndex] = Track {Role::Confidence, "IR", 0, 0, w, h, size_t(w) * size_t(h) * 2};
        m_captureDepthTracks = 2;
    }

    if (colorIndex >= 0) {
        const AVStream* stream = m_format->streams[colorIndex];
        const AVCodecParameters* p = stream->codecpar;
        if (p->codec_type != AVMEDIA_TYPE_VIDEO || p->width <= 0 || p->height <= 0 || p->width > MaxSide
            || p->height > MaxSide || p->width * 9 != p->height * 16) {
            m_warnings.push_back("the COLOR track is not a 16:9 picture; skipped");
        } else {
            RecordedDevice::Node color;
            color.kind = NodeKind::Color;
            color.typeName = device.typeName + " colour";
            color.serial = device.serial;
            // Decoded to B, G, R rows of 1280 x 720 (scaled when the capture's picture is larger).
            const ColorNodeConfiguration colorConfiguration {FRAME_FORMAT_HD720, COMPRESSION_TYPE_NONE,
                                                             frameRateOf(stream), POWER_LINE_FREQUENCY_DISABLED};
            color.properties.push_back(property("enableColorMap", false, false, false));
            color.properties.push_back(property("configuration", colorConfiguration, false, true));
            color.configurations = {colorConfiguration};
            color.configuration = colorConfiguration;
            device.nodes.push_back(color);
            m_colorCodec = p->codec_id;
            m_tracks[colorIndex] = Track {Role::Color, "COLOR", 0, 1, 1280, 720, 0};
        }
    }
    if (m_devices.empty())
        m_devices.push_back(std::move(device));
    else
        m_devices.resize(1);
}

void RecordingReader::rewind()
{
    close();
    open();
}

void RecordingReader::checkFrameSize(const Track& track, int size) const
{
    if (track.frameBytes && size_t(size) != track.frameBytes)
        fail("track '" + track.title + "' holds a frame of " + std::to_string(size) + " bytes where its "
             + std::to_string(track.width) + " x " + std::to_string(track.height) + " format needs "
             + std::to_string(track.frameBytes));
}

bool RecordingReader::next(Sample& sample)
{
    if (!m_format)
        fail("the recording is not open");
    for (;;) {
        if (!m_ready.empty()) {
            sample = std::move(m_ready.front());
            m_ready.pop_front();
            return true;
        }
        const int error = av_read_frame(m_format, m_packet);
        if (error < 0) {
            // The end, or a damaged or truncated tail: samples still waiting for maps go out with the maps
            // they have.
            for (auto& [key, pending] : m_pending)
                if (pending.remaining > 0)
                    m_ready.push_back(std::move(pending.sample));
            m_pending.clear();
            if (!m_ready.empty())
                continue;
            if (m_captureDepth) {
                sample = std::move(m_captureDepth->sample);
                m_captureDepth.reset();
                completeCaptureSample(sample);
                return true;
            }
            return false;
        }
        const bool complete = takePacket(*m_packet, sample);
        av_packet_unref(m_packet);
        if (complete)
            return true;
    }
}

bool RecordingReader::takePacket(AVPacket& packet, Sample& out)
{
    const auto found = m_tracks.find(packet.stream_index);
    if (found == m_tracks.end())
        return false;
    const Track& track = found->second;
    const AVRational microseconds {1, 1000000};
    const int64_t time = packet.pts == AV_NOPTS_VALUE
                             ? 0
                             : av_rescale_q(packet.pts, m_format->streams[packet.stream_index]->time_base, microseconds);
    checkFrameSize(track, packet.size);

    if (m_capture) {
        if (track.role == Role::Color) {
            out = Sample {};
            out.device = 0;
            out.node = track.node;
            out.kind = NodeKind::Color;
            out.timeOfCapture = uint64_t(std::max<int64_t>(0, time));
            out.color.captureConfiguration = std::get<ColorNodeConfiguration>(m_devices[0].nodes[1].configuration);
            out.color.timeOfCapture = out.timeOfCapture;
            if (!m_colorDecoder)
                m_colorDecoder = std::make_unique<ColorDecoder>(m_colorCodec, 1280, 720);
            uint8_t* bgr = nullptr;
            out.color.colorMap = newMap<uint8_t>(size_t(1280) * 720 * 3, &bgr);
            try {
                m_colorDecoder->decode(packet.data, packet.size, bgr);
            } catch (const Exception& e) {
                fail(std::string("COLOR at ") + std::to_string(time) + " us: " + e.what());
            }
            return true;
        }
        bool flushed = false;
        if (m_captureDepth && m_captureDepth->blockTime != time) {
            out = std::move(m_captureDepth->sample);
            m_captureDepth.reset();
            completeCaptureSample(out);
            flushed = true;
        }
        if (!m_captureDepth) {
            m_captureDepth.emplace();
            m_captureDepth->blockTime = time;
            m_captureDepth->remaining = m_captureDepthTracks;
            m_captureDepth->sample.kind = NodeKind::Depth;
            m_captureDepth->sample.timeOfCapture = uint64_t(std::max<int64_t>(0, time));
        }
        storeCaptureDepth(*m_captureDepth, track, packet);
        if (!flushed && m_captureDepth->remaining <= 0) {
            out = std::move(m_captureDepth->sample);
            m_captureDepth.reset();
            completeCaptureSample(out);
            return true;
        }
        return flushed;
    }

    const std::pair<int, int> key {track.device, track.node};
    const RecordedDevice::Node& node = m_devices[size_t(track.device)].nodes[size_t(track.node)];
    if (track.role == Role::Samples) {
        RecordingText::SampleLine line;
        try {
            line = RecordingText::parseSampleLine(std::string(reinterpret_cast<const char*>(packet.data),
                                                              size_t(std::max(0, packet.size))));
        } catch (const Exception& e) {
            fail(std::string("a sample line of node ") + node.serial + " is damaged: " + e.what());
        }
        if (line.device != track.device || line.node != track.node || line.maps < 0 || line.maps > 7)
            fail("a sample line of node " + node.serial + " names another node or too many maps");
        if (line.configuration.index() != node.configuration.index())
            fail("a sample of node " + node.serial + " has a configuration of another node kind");
        // The previous sample of the node still waits for maps that are not coming (their track was
        // skipped): it goes out with the maps it has.
        std::optional<Sample> incomplete;
        if (const auto waiting = m_pending.find(key); waiting != m_pending.end() && waiting->second.remaining > 0)
            incomplete = std::move(waiting->second.sample);
        Pending pending;
        pending.remaining = line.maps;
        Sample& sample = pending.sample;
        sample.device = track.device;
        sample.node = track.node;
        sample.kind = node.kind;
        sample.timeOfCapture = line.timeOfCapture;
        if (node.kind == NodeKind::Depth) {
            sample.depth.captureConfiguration = std::get<DepthNodeConfiguration>(line.configuration);
            if (sample.depth.captureConfiguration.frameFormat
                != std::get<DepthNodeConfiguration>(node.configuration).frameFormat)
                fail("a sample of node " + node.serial + " has another frame format than the node's configuration");
            sample.depth.timeOfCapture = line.timeOfCapture;
            sample.depth.acceleration = {line.acceleration[0], line.acceleration[1], line.acceleration[2]};
        } else if (node.kind == NodeKind::Color) {
            sample.color.captureConfiguration = std::get<ColorNodeConfiguration>(line.configuration);
            if (!(sample.color.captureConfiguration == std::get<ColorNodeConfiguration>(node.configuration)))
                fail("a sample of node " + node.serial + " has another format than the node's configuration");
            sample.color.timeOfCapture = line.timeOfCapture;
        } else {
            sample.audio.audioFormat = std::get<AudioNodeConfiguration>(line.configuration).audioFormat;
            sample.audio.timeOfCapture = line.timeOfCapture;
        }
        if (incomplete) {
            out = std::move(*incomplete);
            if (pending.remaining == 0) {
                m_ready.push_back(std::move(pending.sample));
                m_pending.erase(key);
            } else {
                m_pending[key] = std::move(pending);
            }
            return true;
        }
        if (pending.remaining == 0) {
            out = std::move(pending.sample);
            m_pending.erase(key);
            return true;
        }
        m_pending[key] = std::move(pending);
        return false;
    }
    auto waiting = m_pending.find(key);
    if (waiting == m_pending.end() || waiting->second.remaining <= 0)
        fail("track '" + track.title + "' of node " + node.serial + " has a frame without its sample line");
    storeMap(waiting->second, track, packet);
    if (--waiting->second.remaining > 0)
        return false;
    out = std::move(waiting->second.sample);
    m_pending.erase(waiting);
    return true;
}

void RecordingReader::storeMap(Pending& pending, const Track& track, AVPacket& packet)
{
    Sample& sample = pending.sample;
    auto once = [&](bool present) {
        if (present)
            fail("track '" + track.title + "' has two frames for one sample");
    };
    switch (track.role) {
    case Role::Depth:
        once(sample.depth.depthMap.data());
        sample.depth.depthMap = packetMap<int16_t>(packet, true);
        break;
    case Role::Confidence:
        once(sample.depth.confidenceMap.data());
        sample.depth.confidenceMap = packetMap<int16_t>(packet, true);
        break;
    case Role::Phase:
        once(sample.depth.phaseMap.data());
        sample.depth.phaseMap = packetMap<int16_t>(packet, false);
        break;
    case Role::DepthFloatingPoint:
        once(sample.depth.depthMapFloatingPoint.data());
        sample.depth.depthMapFloatingPoint = packetMap<float>(packet, false);
        break;
    case Role::Vertices:
        once(sample.depth.vertices.data());
        sample.depth.vertices = packetMap<Vertex>(packet, false);
        break;
    case Role::VerticesFloatingPoint:
        once(sample.depth.verticesFloatingPoint.data());
        sample.depth.verticesFloatingPoint = packetMap<FPVertex>(packet, false);
        break;
    case Role::Uv:
        once(sample.depth.uvMap.data());
        sample.depth.uvMap = packetMap<UV>(packet, false);
        break;
    case Role::Color:
        once(sample.color.colorMap.data());
        sample.color.colorMap = packetMap<uint8_t>(packet, false);
        break;
    case Role::Audio:
        once(sample.audio.audioData.data());
        sample.audio.audioData = packetMap<uint8_t>(packet, false);
        break;
    default:
        break;
    }
}

void RecordingReader::storeCaptureDepth(Pending& pending, const Track& track, const AVPacket& packet)
{
    // The delivered part of the big-endian full image, to host order.
    int16_t* out = nullptr;
    Pointer<int16_t> map = newMap<int16_t>(size_t(m_width) * size_t(m_height), &out);
    for (int y = 0; y < m_height; ++y) {
        const uint8_t* row = packet.data + (size_t(y + m_row0) * size_t(m_fullWidth) + size_t(m_column0)) * 2;
        for (int x = 0; x < m_width; ++x)
            out[size_t(y) * size_t(m_width) + size_t(x)] = int16_t(uint16_t(row[2 * x] << 8 | row[2 * x + 1]));
    }
    Pointer<int16_t>& target = track.role == Role::Depth ? pending.sample.depth.depthMap
                                                         : pending.sample.depth.confidenceMap;
    if (target.data())
        fail("track '" + track.title + "' has two frames at one time");
    target = map;
    --pending.remaining;
}

void RecordingReader::completeCaptureSample(Sample& sample)
{
    DepthNode::NewSampleReceivedData& depth = sample.depth;
    depth.captureConfiguration = std::get<DepthNodeConfiguration>(m_devices[0].nodes[0].configuration);
    depth.timeOfCapture = sample.timeOfCapture;
    if (!depth.depthMap.data())
        return; // an IR image alone: its depth block is missing
    const size_t pixels = size_t(m_width) * size_t(m_height);
    const auto* millimetres = reinterpret_cast<const uint16_t*>(depth.depthMap.data());
    float* metres = nullptr;
    depth.depthMapFloatingPoint = newMap<float>(pixels, &metres);
    for (size_t i = 0; i < pixels; ++i)
        metres[i] = float(millimetres[i]) / 1000.f;
    if (!m_calibration)
        return;
    Vertex* vertices = nullptr;
    FPVertex* floating = nullptr;
    UV* uv = nullptr;
    depth.vertices = newMap<Vertex>(pixels, &vertices);
    depth.verticesFloatingPoint = newMap<FPVertex>(pixels, &floating);
    depth.uvMap = newMap<UV>(pixels, &uv);
    m_calibration->computeMaps(millimetres, m_width, m_height, m_column0, m_row0, m_fullWidth, m_fullHeight, vertices,
                               floating, uv);
}

} // namespace Zerlane::recording
