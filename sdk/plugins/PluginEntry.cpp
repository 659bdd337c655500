// The entry point libZerlane.so.1 looks up (ZERLANE_PLUGIN_ENTRY) after loading this library.
#include "PlaybackDriver.h"
#include "SimDriver.h"

#include "Zerlane/plugin/Driver.h"

#include <memory>
#include <vector>

extern "C" __attribute__((visibility("default"))) void
zerlaneCreateDrivers(std::vector<std::unique_ptr<Zerlane::plugin::Driver>>& drivers)
{
    // One driver per loading context; all of them mirror the same process-wide simulated cameras.
    drivers.push_back(std::make_unique<Zerlane::sim::SimDriver>());
    // Recordings play beside the simulated cameras (ZERLANE_SIM_CAMERAS=0 leaves them alone).
    std::vector<std::string> files = Zerlane::playback::PlaybackDriver::filesFromEnvironment();
    if (!files.empty())
        drivers.push_back(std::make_unique<Zerlane::playback::PlaybackDriver>(std::move(files)));
}
