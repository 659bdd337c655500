#pragma once

#include "Zerlane/Event.h"
#include "Zerlane/Export.h"
#include "Zerlane/Node.h"
#include "Zerlane/Type.h"

#include <memory>
#include <string>
#include <vector>

namespace Zerlane {

namespace detail {
class DeviceImpl;
}

// One camera. A handle whose camera has been unplugged still copies and compares; calls that need
// the camera then throw InvalidOperationException.
class ZERLANE_API Device {
public:
    enum Model : int32_t {
        MODEL_UNKNOWN = 0,
        MODEL_ZT_SIM = 1, // the simulated ToF camera
    };

    struct NodeAddedData {
        Node node;
    };
    struct NodeRemovedData {
        Node node;
    };
    using PropertyChangedData = Zerlane::PropertyChangedData;

    Device();
    explicit Device(std::shared_ptr<detail::DeviceImpl> impl); // library use

    static std::string Model_toString(Model model);

    bool isSet() const;
    bool isConnected() const;

    std::vector<Node> getNodes() const;
    std::string getSerialNumber() const;
    Model getModel() const;
    int32_t getUsbBackendVersion() const;
    int32_t getTofControllerVersion() const;
    bool getOverheating() const;
    // True when the camera shut itself down because it overheated (read after it was removed).
    bool getOverheated() const;
    Type getType() const;

    // All three run on the thread inside Context::run().
    Event<Device, NodeAddedData>& nodeAddedEvent();
    Event<Device, NodeRemovedData>& nodeRemovedEvent();
    Event<Device, PropertyChangedData>& propertyChangedEvent();

    bool operator==(const Device& other) const { return m_impl == other.m_impl; }
    bool operator!=(const Device& other) const { return m_impl != other.m_impl; }
    bool operator<(const Device& other) const { return m_impl < other.m_impl; }

    const std::shared_ptr<detail::DeviceImpl>& impl() const { return m_impl; }

private:
    std::shared_ptr<detail::DeviceImpl> m_impl;
};

} // namespace Zerlane
