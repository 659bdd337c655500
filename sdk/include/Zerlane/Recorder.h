#pragma once

#include "Zerlane/Device.h"
#include "Zerlane/Export.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Zerlane {

// Records the samples of cameras into a Matroska file that the playback device plays back (set
// ZERLANE_PLAYBACK to the file) and that other Matroska tools open. Each camera's identity, property
// values and configurations are stored as they are when the recorder is made; depth and active
// brightness go into 16-bit b16g tracks as other depth-camera recordings have them, the other maps and
// audio into tracks of our own, and each sample's exact capture time and acceleration into a text track.
//
// The recorder listens to the sample events of every depth, colour and audio node of the devices; the
// caller registers and starts the nodes (and switches on the maps it wants, "enable...Map"). Samples are
// written by a thread of the recorder; when it falls more than a second of samples behind, further
// samples are dropped and counted rather than held in memory.
//
// Threading: the sample handlers run on the thread inside Context::run(); the other calls may come
// from any thread.
class ZERLANE_API Recorder {
public:
    struct Progress {
        uint64_t samples = 0;  // written
        uint64_t dropped = 0;  // the writer was behind
        uint64_t refused = 0;  // frame size or layout other than when recording began
        uint64_t bytes = 0;    // of map data written
        uint64_t duration = 0; // microseconds from the first to the last capture time written
    };

    // Describes the devices and creates the file. Throws Exception naming the file when it cannot.
    Recorder(const std::string& file, const std::vector<Device>& devices);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // Connects to the nodes' sample events.
    void start();
    // Disconnects, writes what is still queued and closes the file. Throws Exception when writing failed.
    void stop();
    Progress progress() const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace Zerlane
