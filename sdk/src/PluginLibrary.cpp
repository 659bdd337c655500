#include "Zerlane/plugin/PluginLibrary.h"

#include "PluginLoader.h"

namespace Zerlane::plugin {

std::vector<std::unique_ptr<Driver>> PluginLibrary::createDrivers()
{
    return detail::PluginLoader::createDrivers();
}

} // namespace Zerlane::plugin
