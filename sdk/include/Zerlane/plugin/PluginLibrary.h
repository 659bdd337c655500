#pragma once

#include "Zerlane/Export.h"
#include "Zerlane/plugin/Driver.h"

#include <memory>
#include <vector>

namespace Zerlane::plugin {

// The device plug-ins (libZerlanePlugins.so.1), found the way a standalone context finds them, for a
// program that hosts them itself (zerlane-server).
class ZERLANE_API PluginLibrary {
public:
    // A fresh set of drivers, not yet opened. Throws Exception when the plug-ins cannot be loaded.
    static std::vector<std::unique_ptr<Driver>> createDrivers();
};

} // namespace Zerlane::plugin
