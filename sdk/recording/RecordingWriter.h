#pragma once

#include "RecordedDevice.h"
#include "RecordingLayout.h"

#include "Zerlane/AudioNode.h"
#include "Zerlane/ColorNode.h"
#include "Zerlane/DepthNode.h"

#include <cstdint>
#include <string>
#include <vector>

#include <cstdio>

struct AVFormatContext;
struct AVIOContext;
struct AVStream;

namespace Zerlane::recording {

// Writes cameras' samples to a Matroska file in the recording layout (RecordingLayout), through
// libavformat. The tracks are made from the devices' current configurations when the writer is
// constructed; a sample whose frame size differs from its node's tracks is refused (returns false).
// Not thread-safe: one thread writes. Errors throw Exception naming the file.
class RecordingWriter {
public:
    RecordingWriter(const std::string& file, std::vector<RecordedDevice> devices);
    ~RecordingWriter();
    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;

    bool writeDepth(int device, int node, const DepthNode::NewSampleReceivedData& sample);
    bool writeColor(int device, int node, const ColorNode::NewSampleReceivedData& sample);
    bool writeAudio(int device, int node, const AudioNode::NewSampleReceivedData& sample);
    // Writes the index and closes the file; further writes throw.
    void finish();

    uint64_t bytesWritten() const { return m_bytes; }
    const std::string& file() const { return m_file; }

private:
    struct Track {
        int device = 0;
        int node = 0;
        RecordingLayout::Role role = RecordingLayout::Role::Ignored;
        AVStream* stream = nullptr;
        size_t bytes = 0; // payload of one frame; 0 for audio and text
    };

    void open();
    void addNodeTracks(int device, int node, const RecordedDevice::Node& description);
    AVStream* addStream(int device, int node, const char* title, RecordingLayout::Role role, size_t bytes);
    AVStream* addRawVideo(int device, int node, const char* title, RecordingLayout::Role role, int width, int height,
                          int pixelFormat, uint32_t tag, size_t bytes);
    void addAttachment(const std::string& name, const std::string& mimeType, const std::string& content);
    const Track* findTrack(int device, int node, RecordingLayout::Role role) const;
    void writeSampleLine(int device, int node, uint64_t timeOfCapture, int maps, const PropertyValue& configuration,
                         const float* acceleration);
    void writePacket(const Track& track, uint64_t timeOfCapture, const void* data, size_t bytes, bool swap16);
    int64_t blockTime(uint64_t timeOfCapture);
    void fail(const std::string& what, int error) const;
    void closeFile();
    // The file goes through our own I/O so that the FourCC of the 16-bit tracks can be set in their
    // bitmap headers: libavformat writes raw VfW video as untagged RGB.
    static int writeBytes(void* opaque, uint8_t* data, int size);
    static int64_t seekFile(void* opaque, int64_t offset, int whence);
    void tagBitmapHeaders(uint8_t* data, int size);

    std::string m_file;
    std::vector<RecordedDevice> m_devices;
    AVFormatContext* m_format = nullptr;
    AVIOContext* m_io = nullptr;
    std::FILE* m_out = nullptr;
    bool m_tagging = false;            // while headers are written
    std::vector<uint32_t> m_tags;      // FourCCs of the 16-bit tracks' bitmap headers, in track order
    size_t m_tagged = 0;
    std::vector<Track> m_tracks;
    bool m_headerWritten = false;
    bool m_started = false;
    uint64_t m_startTime = 0;
    uint64_t m_bytes = 0;
};

} // namespace Zerlane::recording
