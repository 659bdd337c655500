// zerlane-server: hosts the device plug-ins and serves them to Zerlane clients over TCP.
//   zerlane-server [--port N] [--listen ADDRESS] [--play FILE...]

#include "Server.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/HMLogger.h"
#include "Zerlane/Utils/StreamingMemory.h"
#include "Zerlane/plugin/PluginLibrary.h"

#include <google/protobuf/stubs/logging.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <system_error>

namespace {

const char* const kUsage =
    "usage: zerlane-server [--port N] [--listen ADDRESS] [--play FILE...]\n"
    "  --port N          TCP port to listen on (default 6909)\n"
    "  --listen ADDRESS  address to listen on (default 127.0.0.1, this machine only;\n"
    "                    0.0.0.0 serves every network the machine is on)\n"
    "  --play FILE...    recordings to serve as cameras, beside the simulated ones\n"
    "                    (as ZERLANE_PLAYBACK=FILE[:FILE...] does, which it replaces)\n"
    "At most 64 clients are served at a time. SIGINT or SIGTERM stops the server.\n";

int usage(const std::string& problem)
{
    if (!problem.empty())
        std::cerr << "zerlane-server: " << problem << "\n";
    std::cerr << kUsage;
    return problem.empty() ? 0 : 2;
}

} // namespace

int main(int argc, char** argv)
{
    Zerlane::Utils::StreamingMemory::keepSampleBlocks();
    Zerlane::server::Server::Options options;
    options.stopOnSignals = true;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h")
            return usage({});
        if (arg == "--play") {
            std::string files;
            while (i + 1 < argc && std::string(argv[i + 1]).rfind("--", 0) != 0)
                files += (files.empty() ? "" : ":") + std::string(argv[++i]);
            if (files.empty())
                return usage("--play needs at least one file");
            // The playback plug-in reads its files from the environment, in the server as in standalone use.
            ::setenv("ZERLANE_PLAYBACK", files.c_str(), 1);
            continue;
        }
        if (i + 1 >= argc)
            return usage(arg == "--port" || arg == "--listen" ? arg + " needs a value" : "unknown option " + arg);
        const std::string value = argv[++i];
        if (arg == "--port") {
            char* end = nullptr;
            const long port = std::strtol(value.c_str(), &end, 10);
            if (value.empty() || *end != '\0' || port < 1 || port > 65535)
                return usage("the port must be a number from 1 to 65535");
            options.port = static_cast<uint16_t>(port);
        } else if (arg == "--listen") {
            options.address = value;
        } else {
            return usage("unknown option " + arg);
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
    // A malformed message from a client is reported once, by the session that closes its connection;
    // the protocol library's own complaint (for example about invalid UTF-8) would only repeat it.
    google::protobuf::SetLogHandler(nullptr);

    Zerlane::Utils::HMLogger* logger = Zerlane::Utils::HMLogger::instance();
    try {
        Zerlane::server::Server server(options, Zerlane::plugin::PluginLibrary::createDrivers());
        logger->info("zerlane-server listening on " + options.address + ":" + std::to_string(server.port())
                     + " (at most " + std::to_string(options.maxClients) + " clients)");
        server.run();
        logger->info("zerlane-server stopped");
    } catch (const std::system_error& e) {
        // Binding failed: a malformed address, or the port is taken (another server already runs?).
        logger->error("zerlane-server: cannot listen on " + options.address + ":" + std::to_string(options.port) + " ("
                      + e.code().message() + ")");
        logger->release();
        return 1;
    } catch (const std::exception& e) {
        logger->error(std::string("zerlane-server: ") + e.what());
        logger->release();
        return 1;
    }
    logger->release();
    return 0;
}
