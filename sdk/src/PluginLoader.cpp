#include "PluginLoader.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/EnvironmentVariable.h"

#include <dlfcn.h>

#include <mutex>

namespace Zerlane::detail {

namespace {

struct Loaded {
    std::mutex mutex;
    plugin::CreateDriversFunction entry = nullptr; // the library stays loaded for the process's life
};

Loaded& loaded()
{
    static Loaded instance;
    return instance;
}

bool namesLibraryFile(const std::string& path)
{
    return path.find(".so") != std::string::npos && path.back() != '/';
}

std::string lastError()
{
    const char* error = dlerror();
    return error ? error : "unknown error";
}

// Tries one location; on failure appends "<where>: <dlerror>" to `errors`.
void* openFrom(const std::string& file, const std::string& where, std::string& errors)
{
    if (void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL))
        return handle;
    if (!errors.empty())
        errors += "; ";
    errors += where + ": " + lastError();
    return nullptr;
}

} // namespace

std::string PluginLoader::ownDirectory()
{
    Dl_info info {};
    if (!dladdr(reinterpret_cast<const void*>(&PluginLoader::ownDirectory), &info) || !info.dli_fname)
        return {};
    const std::string path(info.dli_fname);
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

plugin::CreateDriversFunction PluginLoader::entryPoint()
{
    Loaded& state = loaded();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (state.entry)
        return state.entry;

    std::string errors;
    void* handle = nullptr;
    const Utils::EnvironmentVariable override("ZERLANE_PLUGIN_PATH");
    if (override.isSet() && !override.getValue().empty()) {
        const std::string path = override.getValue();
        const std::string file = namesLibraryFile(path) ? path : path + "/" + LIBRARY_NAME;
        handle = openFrom(file, file, errors);
    } else {
        const std::string directory = ownDirectory();
        if (!directory.empty())
            handle = openFrom(directory + "/" + LIBRARY_NAME, directory + "/" + LIBRARY_NAME, errors);
        if (!handle)
            handle = openFrom(LIBRARY_NAME, std::string("the default library path (") + LIBRARY_NAME + ")", errors);
    }
    if (!handle)
        throw Exception("could not load device plug-ins from " + errors);

    dlerror();
    void* symbol = dlsym(handle, ZERLANE_PLUGIN_ENTRY);
    if (!symbol)
        throw Exception(std::string("the device plug-in library has no entry point ") + ZERLANE_PLUGIN_ENTRY + ": "
                        + lastError());
    state.entry = reinterpret_cast<plugin::CreateDriversFunction>(symbol);
    return state.entry;
}

std::vector<std::unique_ptr<plugin::Driver>> PluginLoader::createDrivers()
{
    plugin::CreateDriversFunction create = entryPoint();
    std::vector<std::unique_ptr<plugin::Driver>> drivers;
    create(drivers);
    return drivers;
}

} // namespace Zerlane::detail
