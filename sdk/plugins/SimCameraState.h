#pragma once

#include "Zerlane/Node.h"

#include <atomic>
#include <string>
#include <vector>

namespace Zerlane::sim {

// One simulated camera as the world knows it, shared by every driver's view of it. A device keeps it
// after the camera is unplugged, so the overheated flag can still be read.
struct SimCameraState {
    explicit SimCameraState(std::string serialNumber) : serial(std::move(serialNumber)) {}

    const std::string serial;
    std::vector<NodeKind> nodes; // in plug order; guarded by the world's lock
    std::atomic<bool> controlledByAnotherClient{false};
    std::atomic<bool> overheating{false};
    std::atomic<bool> overheated{false};
};

} // namespace Zerlane::sim
