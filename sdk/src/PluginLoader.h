#pragma once

#include "Zerlane/plugin/Driver.h"

#include <memory>
#include <string>
#include <vector>

namespace Zerlane::detail {

// Finds and loads libZerlanePlugins.so.1 once per process and asks it for drivers.
// Where: the directory (or file) named by ZERLANE_PLUGIN_PATH when that is set; otherwise the directory
// holding libZerlane.so.1, then the dynamic linker's default search.
class PluginLoader {
public:
    static constexpr const char* LIBRARY_NAME = "libZerlanePlugins.so.1";

    // A fresh set of drivers for one context. Throws Exception when the plug-ins cannot be loaded.
    static std::vector<std::unique_ptr<plugin::Driver>> createDrivers();

private:
    static plugin::CreateDriversFunction entryPoint();
    static std::string ownDirectory();
};

} // namespace Zerlane::detail
