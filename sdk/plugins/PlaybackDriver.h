#pragma once

#include "Zerlane/plugin/Driver.h"

#include <memory>
#include <string>
#include <vector>

namespace Zerlane::playback {

class PlaybackDevice;

// The recordings named by ZERLANE_PLAYBACK (FILE[:FILE...]) as cameras, beside the simulated ones: each
// recorded camera of each file becomes a device. A file that cannot be opened is logged, naming it, and
// left out; the others are played.
class PlaybackDriver : public plugin::Driver {
public:
    static constexpr const char* EnvironmentVariable = "ZERLANE_PLAYBACK";

    explicit PlaybackDriver(std::vector<std::string> files);
    ~PlaybackDriver() override;
    // The files of ZERLANE_PLAYBACK; empty when it is not set.
    static std::vector<std::string> filesFromEnvironment();

    std::string name() const override { return "Playback"; }
    void open(plugin::DriverListener* listener) override;
    void close() override;

private:
    std::vector<std::string> m_files;
    std::vector<std::shared_ptr<PlaybackDevice>> m_devices;
};

} // namespace Zerlane::playback
