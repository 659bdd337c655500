#include "app/CommandLine.h"

#include "app/shared/StartupOptions.h"

#include <cstdlib>
#include <cstring>

namespace {

bool is(const char* argument, const char* longName, const char* shortName = nullptr)
{
    return std::strcmp(argument, longName) == 0 || (shortName && std::strcmp(argument, shortName) == 0);
}

} // namespace

const char* CommandLine::usageText()
{
    return "\nUsage :\n\n"
           "    ZerlaneViewer [options]\n\n"
           "Options :\n\n"
           "    -h,  --help                     Print this help\n"
           "    -sa, --standalone               Uses the zerlane driver in standalone mode\n"
           "    -p,  --port <PORT>              Uses PORT to connect to the Zerlane server\n"
           "    -dd, --disabledepth             Don't use depth nodes\n"
           "    -dc, --disablecolor             Don't use color nodes\n"
           "    -da, --disableaudio             Don't use audio nodes\n\n";
}

bool CommandLine::parse(int argc, const char* const* argv, int environmentPort)
{
    long port = environmentPort;
    for (int i = 0; i < argc; ++i) {
        const char* argument = argv[i];
        if (is(argument, "--standalone", "-sa"))
            StartupOptions::setStandalone(true);
        if (is(argument, "--port", "-p")) {
            if (i == argc - 1)
                return true;
            const char* value = argv[++i];
            if (*value != '\0') {
                char* end = nullptr;
                const long parsed = std::strtol(value, &end, 10);
                if (*end == '\0') // a value with trailing characters is ignored
                    port = parsed;
            }
        } else if (is(argument, "--disabledepth", "-dd")) {
            StartupOptions::setDisableDepth(true);
        } else if (is(argument, "--disablecolor", "-dc")) {
            StartupOptions::setDisableColor(true);
        } else if (is(argument, "--disableaudio", "-da")) {
            StartupOptions::setDisableAudio(true);
        } else if (is(argument, "--showhidden")) {
            StartupOptions::setShowHidden(true);
        } else if (is(argument, "--disablePopups")) {
            StartupOptions::setDisablePopups(true);
        } else if (is(argument, "--help", "-h")) {
            return true;
        }
    }
    StartupOptions::setPort(quint16(port));
    return false;
}
