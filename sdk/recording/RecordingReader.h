#pragma once

#include "RecordedDevice.h"
#include "RecordingLayout.h"

#include "Zerlane/AudioNode.h"
#include "Zerlane/ColorNode.h"
#include "Zerlane/DepthNode.h"

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct AVFormatContext;
struct AVPacket;

namespace Zerlane::recording {

class ColorDecoder;
class KinectCalibration;

// Reads a Matroska recording through libavformat and hands back its samples in file order: our own
// recordings (described by their description attachment) and captures in the other depth cameras'
// layout (DEPTH and IR b16g tracks, MJPEG COLOR, calibration.json), whose camera it describes itself.
//
// A capture's depth image is cut to the largest frame format that fits in it, centred: 640 x 576 keeps
// rows 48 to 527 as 640 x 480 (so its pixel (320, 288) is (320, 240) here). Its active-brightness image
// is the confidence map; vertex, floating-point vertex and UV maps come from the calibration attachment.
//
// Every error throws Exception whose message starts with the file name. Not thread-safe.
class RecordingReader {
public:
    struct Sample {
        int device = 0;
        int node = 0;
        NodeKind kind = NodeKind::Depth;
        uint64_t timeOfCapture = 0;
        DepthNode::NewSampleReceivedData depth;
        ColorNode::NewSampleReceivedData color;
        AudioNode::NewSampleReceivedData audio;
    };

    explicit RecordingReader(const std::string& file);
    ~RecordingReader();
    RecordingReader(const RecordingReader&) = delete;
    RecordingReader& operator=(const RecordingReader&) = delete;

    const std::string& file() const { return m_file; }
    const std::vector<RecordedDevice>& devices() const { return m_devices; }
    // Tracks that were skipped because they belong to no layout we know, one text each.
    const std::vector<std::string>& warnings() const { return m_warnings; }

    // The next sample; false at the end of the file. A sample whose maps lie in a skipped track, or beyond
    // the end of a truncated file, comes with the maps that could be read.
    bool next(Sample& sample);
    // Back to the first sample (the file is opened again, so a file that is gone is reported).
    void rewind();

private:
    struct Track {
        RecordingLayout::Role role = RecordingLayout::Role::Ignored;
        std::string title;
        int device = 0;
        int node = 0;
        int width = 0;   // of the stored frame, in its own units (16-bit words for our maps)
        int height = 0;
        size_t frameBytes = 0; // 0: any size (compressed colour, audio, text)
    };
    struct Pending {
        Pending() {} // declared, so that the class is default-constructible while RecordingReader is incomplete
        Sample sample;
        int remaining = -1; // map packets still to come; -1: grouped by block time (capture layout)
        int64_t blockTime = 0;
    };

    void open();
    void close();
    void describeOwnRecording(const std::string& description);
    void describeCapture();
    void addTrack(int index);
    [[noreturn]] void fail(const std::string& what) const;
    // Takes over the packet's data when it becomes a map.
    bool takePacket(AVPacket& packet, Sample& out);
    void storeMap(Pending& pending, const Track& track, AVPacket& packet);
    void storeCaptureDepth(Pending& pending, const Track& track, const AVPacket& packet);
    void completeCaptureSample(Sample& sample);
    void checkFrameSize(const Track& track, int size) const;

    std::string m_file;
    AVFormatContext* m_format = nullptr;
    AVPacket* m_packet = nullptr;
    bool m_capture = false; // the other cameras' layout, not ours
    std::vector<RecordedDevice> m_devices;
    std::vector<std::string> m_warnings;
    std::map<int, Track> m_tracks; // by stream index
    std::map<std::pair<int, int>, Pending> m_pending;
    std::deque<Sample> m_ready; // complete, to be handed out before more is read
    std::optional<Pending> m_captureDepth;
    std::unique_ptr<KinectCalibration> m_calibration;
    std::unique_ptr<ColorDecoder> m_colorDecoder;
    int m_colorCodec = 0;
    // Capture layout: the full depth image and the part of it delivered.
    int m_fullWidth = 0, m_fullHeight = 0, m_column0 = 0, m_row0 = 0, m_width = 0, m_height = 0;
    int m_captureDepthTracks = 0;
};

} // namespace Zerlane::recording
