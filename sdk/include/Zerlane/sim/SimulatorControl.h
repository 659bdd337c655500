#pragma once

#include "Zerlane/Node.h"
#include "Zerlane/plugin/FaultInjector.h"

#include <string>
#include <vector>

#if defined(ZERLANE_BUILDING_PLUGINS)
#define ZERLANE_PLUGINS_API __attribute__((visibility("default")))
#else
#define ZERLANE_PLUGINS_API
#endif

namespace Zerlane::Sim {

// The knobs of the simulated ToF cameras (libZerlanePlugins.so.1), for tests and demos.
//
// The simulator keeps one process-wide list of plugged-in cameras; every standalone context sees it
// (each through its own driver instance). At load the list holds ZERLANE_SIM_CAMERAS cameras
// (default 1) with serial numbers "ZS" + a number, and the scene's noise comes from ZERLANE_SIM_SEED
// (default 1). All functions are thread-safe.
class ZERLANE_PLUGINS_API Control {
public:
    // Back to the state at load: cameras from the environment, clocked samples, no faults, no other
    // client, transport intact. Open contexts see the cameras leave and come back.
    static void reset();

    // Plugs in a camera with a depth, a colour and an audio node; an empty serial picks the next free
    // one. Returns the serial number.
    static std::string addCamera(const std::string& serial = {});
    static void removeCamera(const std::string& serial);
    static std::vector<std::string> cameras();
    // Adds or removes a node of that kind on a plugged-in camera (Unsupported adds an unsupported node).
    static void addNode(const std::string& serial, NodeKind kind);
    static void removeNode(const std::string& serial, NodeKind kind);

    // The camera (and all its nodes) is held by another client: requestControl throws TimeoutException.
    static void setControlledByAnotherClient(const std::string& serial, bool held);
    // The camera reports overheating; with `overheated` it also unplugs itself.
    static void setOverheating(const std::string& serial, bool overheating, bool overheated = false);

    // Stepped mode: no samples by the clock; step() makes one sample for every streaming node of every
    // camera and hands it to the library before it returns.
    static void setStepped(bool stepped);
    static void step(int count = 1);

    // The next (or current) Context::run() of every standalone context ends with TransportException.
    static void failTransport(const std::string& message);

    // Shorthand for plugin::FaultInjector::inject.
    static void injectException(const std::string& operation, plugin::FaultInjector::Kind kind,
                                const std::string& message, int count = -1);
};

} // namespace Zerlane::Sim
