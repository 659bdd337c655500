#include "RecordingWriter.h"

#include "RecordingText.h"

#include "Zerlane/Exceptions.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace Zerlane::recording {

namespace {

using Role = RecordingLayout::Role;

constexpr uint32_t tag(char a, char b, char c, char d)
{
    return uint32_t(uint8_t(a)) | uint32_t(uint8_t(b)) << 8 | uint32_t(uint8_t(c)) << 16 | uint32_t(uint8_t(d)) << 24;
}

std::string errorText(int error)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return text;
}

bool boolProperty(const RecordedDevice::Node& node, const std::string& name)
{
    for (const RecordedDevice::Property& property : node.properties)
        if (property.spec.name == name)
            if (const bool* value = std::get_if<bool>(&property.value))
                return *value;
    return false;
}

template <class Configuration>
FrameFormat formatOf(const PropertyValue& value)
{
    const auto* configuration = std::get_if<Configuration>(&value);
    return configuration ? configuration->frameFormat : FRAME_FORMAT_UNKNOWN;
}

} // namespace

RecordingWriter::RecordingWriter(const std::string& file, std::vector<RecordedDevice> devices)
    : m_file(file), m_devices(std::move(devices))
{
    try {
        open();
    } catch (...) {
        m_headerWritten = false;
        avformat_free_context(m_format);
        m_format = nullptr;
        closeFile();
        throw;
    }
}

void RecordingWriter::open()
{
    RecordingLayout::quietFfmpeg();
    const std::string& file = m_file;
    int error = avformat_alloc_output_context2(&m_format, nullptr, "matroska", file.c_str());
    if (error < 0 || !m_format)
        fail("cannot make a Matroska writer", error);
    av_dict_set(&m_format->metadata, "title", "Zerlane recording", 0);
    if (!m_devices.empty())
        av_dict_set(&m_format->metadata, "ZERLANE_DEVICE_SERIAL_NUMBER", m_devices.front().serial.c_str(), 0);
    for (size_t d = 0; d < m_devices.size(); ++d)
        for (size_t n = 0; n < m_devices[d].nodes.size(); ++n)
            addNodeTracks(int(d), int(n), m_devices[d].nodes[n]);
    addAttachment(RecordingLayout::DescriptionFile, "text/plain", RecordingText::describe(m_devices));

    m_out = std::fopen(file.c_str(), "wb");
    if (!m_out)
        fail(std::string("cannot open for writing: ") + std::strerror(errno), 0);
    constexpr int BufferSize = 1 << 20; // headers fit in one piece, so their bitmap headers can be tagged
    auto* buffer = static_cast<uint8_t*>(av_malloc(BufferSize));
    m_io = buffer ? avio_alloc_context(buffer, BufferSize, 1, this, nullptr, &RecordingWriter::writeBytes,
                                       &RecordingWriter::seekFile)
                  : nullptr;
    if (!m_io) {
        av_free(buffer);
        fail("out of memory", 0);
    }
    m_format->pb = m_io;
    m_format->flags |= AVFMT_FLAG_CUSTOM_IO;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "allow_raw_vfw", "1", 0); // the b16g tracks are VfW raw video, as other recordings have them
    av_dict_set(&options, "write_crc32", "0", 0);   // the tagged headers would fail their checksums
    m_tagging = true;
    error = avformat_write_header(m_format, &options);
    if (error >= 0)
        avio_flush(m_io);
    m_tagging = false;
    av_dict_free(&options);
    if (error < 0)
        fail("cannot write the header", error);
    if (m_tagged != m_tags.size())
        fail("the 16-bit tracks' bitmap headers were not found to tag", 0);
    m_headerWritten = true;
}

RecordingWriter::~RecordingWriter()
{
    try {
        finish();
    } catch (const Exception&) {
        // the owner calls finish() itself to hear about failures
    }
}

void RecordingWriter::addNodeTracks(int device, int node, const RecordedDevice::Node& description)
{
    int32_t width = 0, height = 0;
    switch (description.kind) {
    case NodeKind::Depth: {
        FrameFormat_toResolution(formatOf<DepthNodeConfiguration>(description.configuration), &width, &height);
        const int depthPlanes = boolProperty(description, "depthMap3Planes") ? 3 : 1;
        const int floatPlanes = boolProperty(description, "depthMapFloatingPoint3Planes") ? 3 : 1;
        const struct {
            const char* title;
            Role role;
            int planes;
            bool bigEndian;
        } maps[] = {{RecordingLayout::DepthTitle, Role::Depth, depthPlanes, true},
                    {RecordingLayout::ConfidenceTitle, Role::Confidence, 1, true},
                    {RecordingLayout::PhaseTitle, Role::Phase, 1, false},
                    {RecordingLayout::DepthFloatingPointTitle, Role::DepthFloatingPoint, floatPlanes, false},
                    {RecordingLayout::VerticesTitle, Role::Vertices, 1, false},
                    {RecordingLayout::VerticesFloatingPointTitle, Role::VerticesFloatingPoint, 1, false},
                    {RecordingLayout::UvTitle, Role::Uv, 1, false}};
        for (const auto& map : maps) {
            const int bytes = RecordingLayout::elementBytes(map.role);
            AVStream* stream =
                addRawVideo(device, node, map.title, map.role, map.bigEndian ? width : width * bytes,
                            height * map.planes, map.bigEndian ? AV_PIX_FMT_GRAY16BE : AV_PIX_FMT_GRAY8,
                            map.bigEndian ? tag('b', '1', '6', 'g') : tag('Y', '8', '0', '0'),
                            size_t(width) * height * map.planes * RecordingLayout::elementBytes(map.role));
            av_dict_set_int(&stream->metadata, RecordingLayout::PlanesTag, map.planes, 0);
        }
        break;
    }
    case NodeKind::Color: {
        FrameFormat_toResolution(formatOf<ColorNodeConfiguration>(description.configuration), &width, &height);
        const auto* configuration = std::get_if<ColorNodeConfiguration>(&description.configuration);
        const bool bgr = configuration && configuration->compression == COMPRESSION_TYPE_NONE;
        addRawVideo(device, node, RecordingLayout::ColorTitle, Role::Color, width, height,
                    bgr ? AV_PIX_FMT_BGR24 : AV_PIX_FMT_YUYV422, bgr ? tag('B', 'G', 'R', 24) : tag('Y', 'U', 'Y', '2'),
                    size_t(width) * height * (bgr ? 3 : 2));
        break;
    }
    case NodeKind::Audio: {
        const auto* configuration = std::get_if<AudioNodeConfiguration>(&description.configuration);
        if (!configuration || configuration->audioFormat.bitsPerSample != 16 || configuration->audioFormat.nbChannels < 1)
            throw Exception(m_file + ": audio of node " + description.serial
                            + " is not 16-bit PCM; only 16-bit audio can be recorded");
        AVStream* stream = addStream(device, node, RecordingLayout::AudioTitle, Role::Audio, 0);
        stream->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
        stream->codecpar->codec_id = AV_CODEC_ID_PCM_S16LE;
        stream->codecpar->sample_rate = configuration->audioFormat.sampleRate;
        stream->codecpar->bits_per_coded_sample = 16;
        av_channel_layout_default(&stream->codecpar->ch_layout, configuration->audioFormat.nbChannels);
        break;
    }
    default:
        return; // unsupported nodes deliver nothing
    }
    AVStream* samples = addStream(device, node, RecordingLayout::SamplesTitle, Role::Samples, 0);
    samples->codecpar->codec_type = AVMEDIA_TYPE_SUBTITLE;
    samples->codecpar->codec_id = AV_CODEC_ID_TEXT;
}

AVStream* RecordingWriter::addStream(int device, int node, const char* title, Role role, size_t bytes)
{
    AVStream* stream = avformat_new_stream(m_format, nullptr);
    if (!stream)
        throw Exception(m_file + ": out of memory adding a track");
    stream->time_base = AVRational {1, 1000000};
    av_dict_set(&stream->metadata, "title", title, 0);
    av_dict_set_int(&stream->metadata, RecordingLayout::DeviceTag, device, 0);
    av_dict_set_int(&stream->metadata, RecordingLayout::NodeTag, node, 0);
    m_tracks.push_back({device, node, role, stream, bytes});
    return stream;
}

AVStream* RecordingWriter::addRawVideo(int device, int node, const char* title, Role role, int width, int height,
                                       int pixelFormat, uint32_t codecTag, size_t bytes)
{
    AVStream* stream = addStream(device, node, title, role, bytes);
    if (pixelFormat == AV_PIX_FMT_GRAY16BE)
        m_tags.push_back(codecTag);
    AVCodecParameters* parameters = stream->codecpar;
    parameters->codec_type = AVMEDIA_TYPE_VIDEO;
    parameters->codec_id = AV_CODEC_ID_RAWVIDEO;
    parameters->codec_tag = codecTag;
    parameters->format = pixelFormat;
    parameters->width = width;
    parameters->height = height;
    parameters->bits_per_coded_sample = pixelFormat == AV_PIX_FMT_BGR24 ? 24 : pixelFormat == AV_PIX_FMT_GRAY8 ? 8 : 16;
    return stream;
}

void RecordingWriter::addAttachment(const std::string& name, const std::string& mimeType, const std::string& content)
{
    AVStream* stream = avformat_new_stream(m_format, nullptr);
    if (!stream)
        throw Exception(m_file + ": out of memory adding an attachment");
    stream->codecpar->codec_type = AVMEDIA_TYPE_ATTACHMENT;
    stream->codecpar->codec_id = AV_CODEC_ID_TEXT;
    stream->codecpar->extradata = static_cast<uint8_t*>(av_mallocz(content.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!stream->codecpar->extradata)
        throw Exception(m_file + ": out of memory adding an attachment");
    std::memcpy(stream->codecpar->extradata, content.data(), content.size());
    stream->codecpar->extradata_size = int(content.size());
    av_dict_set(&stream->metadata, "filename", name.c_str(), 0);
    av_dict_set(&stream->metadata, "mimetype", mimeType.c_str(), 0);
}

const RecordingWriter::Track* RecordingWriter::findTrack(int device, int node, Role role) const
{
    for (const Track& track : m_tracks)
        if (track.device == device && track.node == node && track.role == role)
            return &track;
    return nullptr;
}

int64_t RecordingWriter::blockTime(uint64_t timeOfCapture)
{
    if (!m_started) {
        m_started = true;
        m_startTime = timeOfCapture;
    }
    // Block times are only an index: the exact time is in the sample's text line.
    return timeOfCapture > m_startTime ? int64_t(timeOfCapture - m_startTime) : 0;
}

void RecordingWriter::writePacket(const Track& track, uint64_t timeOfCapture, const void* data, size_t bytes,
                                  bool swap16)
{
    if (!m_headerWritten)
        throw Exception(m_file + ": the recording is already closed");
    AVPacket* packet = av_packet_alloc();
    if (!packet || av_new_packet(packet, int(bytes)) < 0) {
        av_packet_free(&packet);
        throw Exception(m_file + ": out of memory writing a sample");
    }
    if (swap16) {
        const auto* in = static_cast<const uint8_t*>(data);
        for (size_t i = 0; i + 1 < bytes; i += 2) {
            packet->data[i] = in[i + 1];
            packet->data[i + 1] = in[i];
        }
    } else if (bytes) {
        std::memcpy(packet->data, data, bytes);
    }
    packet->stream_index = track.stream->index;
    packet->pts = packet->dts =
        av_rescale_q(blockTime(timeOfCapture), AVRational {1, 1000000}, track.stream->time_base);
    packet->duration = 1;
    packet->flags |= AV_PKT_FLAG_KEY;
    const int error = av_write_frame(m_format, packet);
    av_packet_free(&packet);
    if (error < 0)
        fail("cannot write a sample", error);
    m_bytes += bytes;
}

void RecordingWriter::writeSampleLine(int device, int node, uint64_t timeOfCapture, int maps,
                                      const PropertyValue& configuration, const float* acceleration)
{
    const Track* track = findTrack(device, node, Role::Samples);
    if (!track)
        throw Exception(m_file + ": no recorded node " + std::to_string(device) + "/" + std::to_string(node));
    RecordingText::SampleLine line;
    line.device = device;
    line.node = node;
    line.timeOfCapture = timeOfCapture;
    line.maps = maps;
    line.configuration = configuration;
    if (acceleration)
        std::copy(acceleration, acceleration + 3, line.acceleration);
    const std::string text = RecordingText::sampleLine(line);
    writePacket(*track, timeOfCapture, text.data(), text.size(), false);
}

bool RecordingWriter::writeDepth(int device, int node, const DepthNode::NewSampleReceivedData& sample)
{
    struct Map {
        Role role;
        const void* data;
        size_t bytes;
    };
    const Map maps[] = {
        {Role::Depth, sample.depthMap.data(), size_t(sample.depthMap.size()) * 2},
        {Role::Confidence, sample.confidenceMap.data(), size_t(sample.confidenceMap.size()) * 2},
        {Role::Phase, sample.phaseMap.data(), size_t(sample.phaseMap.size()) * 2},
        {Role::DepthFloatingPoint, sample.depthMapFloatingPoint.data(), size_t(sample.depthMapFloatingPoint.size()) * 4},
        {Role::Vertices, sample.vertices.data(), size_t(sample.vertices.size()) * 6},
        {Role::VerticesFloatingPoint, sample.verticesFloatingPoint.data(),
         size_t(sample.verticesFloatingPoint.size()) * 12},
        {Role::Uv, sample.uvMap.data(), size_t(sample.uvMap.size()) * 8},
    };
    int present = 0;
    for (const Map& map : maps) {
        if (!map.data)
            continue;
        const Track* track = findTrack(device, node, map.role);
        if (!track || track->bytes != map.bytes)
            return false; // another frame size or plane layout than the tracks were made for
        ++present;
    }
    const float acceleration[3] = {sample.acceleration.x, sample.acceleration.y, sample.acceleration.z};
    writeSampleLine(device, node, sample.timeOfCapture, present, sample.captureConfiguration, acceleration);
    for (const Map& map : maps)
        if (map.data)
            writePacket(*findTrack(device, node, map.role), sample.timeOfCapture, map.data, map.bytes,
                        map.role == Role::Depth || map.role == Role::Confidence);
    return true;
}

bool RecordingWriter::writeColor(int device, int node, const ColorNode::NewSampleReceivedData& sample)
{
    const Track* track = findTrack(device, node, Role::Color);
    const size_t bytes = size_t(sample.colorMap.size());
    if (!track || (sample.colorMap.data() && track->bytes != bytes))
        return false;
    const int maps = sample.colorMap.data() ? 1 : 0;
    writeSampleLine(device, node, sample.timeOfCapture, maps, sample.captureConfiguration, nullptr);
    if (maps)
        writePacket(*track, sample.timeOfCapture, sample.colorMap.data(), bytes, false);
    return true;
}

bool RecordingWriter::writeAudio(int device, int node, const AudioNode::NewSampleReceivedData& sample)
{
    const Track* track = findTrack(device, node, Role::Audio);
    if (!track)
        return false;
    const int maps = sample.audioData.data() ? 1 : 0;
    AudioNodeConfiguration configuration;
    configuration.audioFormat = sample.audioFormat;
    writeSampleLine(device, node, sample.timeOfCapture, maps, configuration, nullptr);
    if (maps)
        writePacket(*track, sample.timeOfCapture, sample.audioData.data(), size_t(sample.audioData.size()), false);
    return true;
}

void RecordingWriter::finish()
{
    if (!m_format)
        return;
    int error = 0;
    if (m_headerWritten) {
        m_tagged = 0;
        m_tagging = true; // the trailer may write the track headers again
        error = av_write_trailer(m_format);
        avio_flush(m_io);
        m_tagging = false;
    }
    m_headerWritten = false;
    avformat_free_context(m_format);
    m_format = nullptr;
    const bool closed = m_out && std::fclose(m_out) == 0;
    m_out = nullptr;
    closeFile();
    if (error < 0)
        throw Exception(m_file + ": cannot finish the recording: " + errorText(error));
    if (!closed)
        throw Exception(m_file + ": cannot finish the recording: " + std::strerror(errno));
}

void RecordingWriter::closeFile()
{
    if (m_io) {
        av_freep(&m_io->buffer);
        avio_context_free(&m_io);
    }
    if (m_out)
        std::fclose(m_out);
    m_out = nullptr;
}

int RecordingWriter::writeBytes(void* opaque, uint8_t* data, int size)
{
    auto* self = static_cast<RecordingWriter*>(opaque);
    if (self->m_tagging)
        self->tagBitmapHeaders(data, size);
    if (std::fwrite(data, 1, size_t(size), self->m_out) != size_t(size))
        return AVERROR(errno ? errno : EIO);
    return size;
}

int64_t RecordingWriter::seekFile(void* opaque, int64_t offset, int whence)
{
    auto* self = static_cast<RecordingWriter*>(opaque);
    if (whence & AVSEEK_SIZE) {
        const off_t here = ftello(self->m_out);
        if (fseeko(self->m_out, 0, SEEK_END) != 0)
            return AVERROR(errno);
        const off_t size = ftello(self->m_out);
        fseeko(self->m_out, here, SEEK_SET);
        return size;
    }
    if (fseeko(self->m_out, off_t(offset), whence & ~AVSEEK_FORCE) != 0)
        return AVERROR(errno);
    return ftello(self->m_out);
}

void RecordingWriter::tagBitmapHeaders(uint8_t* data, int size)
{
    // BITMAPINFOHEADER: size 40, width, height, planes 1, 16 bits, compression 0 (untagged) or already the
    // track's FourCC.
    auto le32 = [](const uint8_t* p) { return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24; };
    for (int i = 0; i + 40 <= size && m_tagged < m_tags.size(); ++i) {
        const uint8_t* p = data + i;
        if (le32(p) != 40 || p[12] != 1 || p[13] != 0 || p[14] != 16 || p[15] != 0
            || (le32(p + 16) != 0 && le32(p + 16) != m_tags[m_tagged]))
            continue;
        const uint32_t tag = m_tags[m_tagged++];
        data[i + 16] = uint8_t(tag);
        data[i + 17] = uint8_t(tag >> 8);
        data[i + 18] = uint8_t(tag >> 16);
        data[i + 19] = uint8_t(tag >> 24);
        i += 39;
    }
}

void RecordingWriter::fail(const std::string& what, int error) const
{
    throw Exception(m_file + ": " + what + (error < 0 ? ": " + errorText(error) : std::string()));
}

} // namespace Zerlane::recording
