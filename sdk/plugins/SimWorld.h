#pragma once

#include "Zerlane/Node.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Zerlane::sim {

class SimDriver;
struct SimCameraState;

// The process-wide state of the simulated cameras behind Sim::Control: which cameras are plugged in and
// with which nodes, stepped mode, a failed transport. Every open driver mirrors it and is told of each
// change, with the world's lock held, so changes reach every context in the same order.
class SimWorld {
public:
    static constexpr int MaxCameras = 16;

    static SimWorld& instance();

    void attach(SimDriver& driver);
    void detach(SimDriver& driver);

    void reset();
    std::string addCamera(const std::string& serial);
    void removeCamera(const std::string& serial);
    std::vector<std::string> cameras() const;
    void addNode(const std::string& serial, NodeKind kind);
    void removeNode(const std::string& serial, NodeKind kind);
    void setControlledByAnotherClient(const std::string& serial, bool held);
    void setOverheating(const std::string& serial, bool overheating, bool overheated);
    void setStepped(bool stepped);
    void step(int count);
    void failTransport(const std::string& message);

    bool stepped() const { return m_stepped.load(); }
    uint32_t seed() const { return m_seed; }

private:
    SimWorld();

    std::shared_ptr<SimCameraState> findCamera(const std::string& serial) const;
    std::string nextFreeSerial() const;
    void plug(const std::string& serial);
    void unplug(const std::string& serial);
    void plugInitialCameras();

    mutable std::recursive_mutex m_mutex;
    std::vector<std::shared_ptr<SimCameraState>> m_cameras;
    std::vector<SimDriver*> m_drivers;
    std::atomic<bool> m_stepped{false};
    std::optional<std::string> m_transportFailure;
    int m_initialCameras = 1;
    uint32_t m_seed = 1;
};

} // namespace Zerlane::sim
