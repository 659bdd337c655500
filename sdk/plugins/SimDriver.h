#pragma once

#include "Zerlane/Node.h"
#include "Zerlane/plugin/Driver.h"

#include <memory>
#include <string>
#include <vector>

namespace Zerlane::sim {

class ListenerLink;
class SimDevice;
class SimNode;
struct SimCameraState;

// The simulated cameras as one context sees them. Each standalone context gets its own driver, which
// mirrors the process-wide SimWorld and reports its changes to that context's listener.
class SimDriver : public plugin::Driver {
public:
    SimDriver() = default;
    ~SimDriver() override;

    std::string name() const override { return "ZT-Sim"; }
    void open(plugin::DriverListener* listener) override;
    void close() override;

    // Changes of the world, called by SimWorld with its lock held.
    void cameraPlugged(const std::shared_ptr<SimCameraState>& camera);
    void cameraUnplugged(const std::string& serial);
    void nodePlugged(const std::string& serial, NodeKind kind);
    void nodeUnplugged(const std::string& serial, NodeKind kind);
    void reportTransportFailure(const std::string& message);
    void devicePropertyChanged(const std::string& serial, const std::string& name);
    std::vector<std::shared_ptr<SimNode>> allNodes() const;
    // Called by SimWorld while it registers or unregisters this driver.
    void detachAll();

private:
    std::shared_ptr<SimDevice> findDevice(const std::string& serial) const;

    bool m_open = false;
    std::shared_ptr<ListenerLink> m_link;
    std::vector<std::shared_ptr<SimDevice>> m_devices; // changed only under the world's lock
};

} // namespace Zerlane::sim
