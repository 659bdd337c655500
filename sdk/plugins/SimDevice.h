#pragma once

#include "PropertyTable.h"

#include "Zerlane/plugin/DeviceDriver.h"

#include <memory>
#include <mutex>
#include <vector>

namespace Zerlane::sim {

class ListenerLink;
class SimNode;
struct SimCameraState;

// One driver's view of a simulated camera: its properties and its nodes.
class SimDevice : public plugin::DeviceDriver, public std::enable_shared_from_this<SimDevice> {
public:
    static constexpr const char* TypeName = "ZT-Sim Device";
    static constexpr int32_t UsbBackendVersion = 0x1f2;
    static constexpr int32_t TofControllerVersion = 0x4a3;

    SimDevice(std::shared_ptr<SimCameraState> camera, std::shared_ptr<ListenerLink> link);
    ~SimDevice() override;

    static std::shared_ptr<const plugin::TypeSpec> typeSpec();

    // Node management by the driver (the world's lock is held). add returns the new node, remove the
    // node that left (stopped), or null when there was none of that kind.
    std::shared_ptr<SimNode> addNode(NodeKind kind);
    std::shared_ptr<SimNode> removeNode(NodeKind kind);
    std::vector<std::shared_ptr<SimNode>> simNodes() const;
    void stopAllNodes();
    // Tells the library that a device property changed by itself (a measured value).
    void reportPropertyChanged(const std::string& name);

    const std::string& serial() const;
    // What the depth node's UV map points into: the colour node's current frame format (VGA without one).
    FrameFormat colorFrameFormat() const;
    // The depth node's camera mode, which chooses the scene both cameras see (long range without one).
    CameraMode depthCameraMode() const;
    // Blade-pass frequency of the cooling fan, heard by the microphones (0 with the fan off).
    float fanHumFrequency() const;

    Device::Model model() const override { return Device::MODEL_ZT_SIM; }
    std::string serialNumber() const override;
    int32_t usbBackendVersion() const override { return UsbBackendVersion; }
    int32_t tofControllerVersion() const override { return TofControllerVersion; }
    bool overheating() const override;
    bool overheated() const override;

    std::shared_ptr<const plugin::TypeSpec> type() const override { return typeSpec(); }
    PropertyValue getProperty(const std::string& name) const override;
    void setProperty(const std::string& name, const PropertyValue& value) override;

    bool controlledByAnotherClient() const override;
    std::vector<std::shared_ptr<plugin::NodeDriver>> nodes() const override;

private:
    static std::vector<PropertyDeclaration> declarations();
    std::shared_ptr<SimNode> makeNode(NodeKind kind);

    std::shared_ptr<SimCameraState> m_camera;
    std::shared_ptr<ListenerLink> m_link;

    mutable std::mutex m_mutex;
    PropertyTable m_properties;
    std::vector<std::shared_ptr<SimNode>> m_nodes;
};

} // namespace Zerlane::sim
