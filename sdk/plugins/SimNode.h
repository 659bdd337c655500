#pragma once

#include "PropertyDeclaration.h"
#include "PropertyTable.h"

#include "Zerlane/plugin/NodeDriver.h"
#include "Zerlane/plugin/SampleSink.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace Zerlane::sim {

class ListenerLink;
class SimDevice;
struct SimCameraState;

// What every simulated node shares: identity, properties and configuration, and streaming. While started,
// a thread makes one sample per period of the current configuration; in stepped mode the thread stays
// idle and the world asks for samples one by one instead. All production happens under one lock, so a
// stop() that returns guarantees no further sample reaches the sink.
class SimNode : public plugin::NodeDriver {
public:
    struct Identity {
        NodeKind kind = NodeKind::Unsupported;
        std::shared_ptr<const plugin::TypeSpec> type;
        int32_t pid = 0;
        int32_t mediaInterface = 0;
    };
    static constexpr int32_t VendorId = 0x3a9c;
    static constexpr int32_t Revision = 0x0104;

    SimNode(Identity identity, std::vector<PropertyDeclaration> properties, std::shared_ptr<SimCameraState> camera,
            std::weak_ptr<SimDevice> device, std::shared_ptr<ListenerLink> link);
    // Derived classes call stop() in their destructors: the thread calls their produceSample().
    ~SimNode() override;

    NodeKind kind() const override { return m_identity.kind; }
    std::shared_ptr<const plugin::TypeSpec> type() const override { return m_identity.type; }
    std::string serialNumber() const override;
    int32_t vid() const override { return VendorId; }
    int32_t pid() const override { return m_identity.pid; }
    int32_t revision() const override { return Revision; }
    int32_t mediaInterface() const override { return m_identity.mediaInterface; }

    PropertyValue getProperty(const std::string& name) const override;
    void setProperty(const std::string& name, const PropertyValue& value) override;

    PropertyValue configuration() const override;
    void setConfiguration(const PropertyValue& configuration) override;

    bool controlledByAnotherClient() const override;

    void start(plugin::SampleSink* sink) override;
    void stop() override;

    bool isStarted() const;
    // Stepped mode: one sample now, handed to the sink before this returns (nothing when not started).
    void produceSteppedSample();
    // Returns once no clocked sample is being produced (used when stepped mode is switched on).
    void waitForProduction();

protected:
    // Makes one sample of the current settings and hands it to the sink. Called under the production lock.
    virtual void produceSample(plugin::SampleSink& sink, uint64_t captureTime) = 0;
    virtual std::chrono::microseconds samplePeriod() const = 0;
    // Whether the node offers this configuration; throws ArgumentException explaining why not.
    virtual void checkOffered(const PropertyValue& configuration) const = 0;
    // Values the node measures rather than stores ("range", temperatures). Called under the settings lock.
    virtual std::optional<PropertyValue> measuredProperty(const std::string& name) const;
    // After the configuration changed (settings lock not held): report dependent read-only values.
    virtual void configurationChanged(const PropertyValue& before, const PropertyValue& after);
    // Called about once a second while the node streams by the clock: report measured values that
    // drift (temperatures), as a camera does.
    virtual void reportMeasuredValues();

    void reportPropertyChanged(const std::string& name);
    std::shared_ptr<SimDevice> device() const { return m_device.lock(); }
    uint32_t seed() const;

    template <class T>
    T setting(const std::string& name) const
    {
        std::lock_guard<std::mutex> lock(m_settingsMutex);
        return m_properties.value<T>(name);
    }

    mutable std::mutex m_settingsMutex;
    PropertyTable m_properties;

private:
    void applyConfiguration(const PropertyValue& configuration, bool reportConfiguration);
    void streamLoop();
    void produceClockedSample();
    uint64_t nextCaptureTime();

    Identity m_identity;
    std::shared_ptr<SimCameraState> m_camera;
    std::weak_ptr<SimDevice> m_device;
    std::shared_ptr<ListenerLink> m_link;

    std::mutex m_lifecycleMutex; // start() and stop() one at a time
    mutable std::mutex m_productionMutex;
    plugin::SampleSink* m_sink = nullptr; // guarded by m_productionMutex
    uint64_t m_lastCaptureTime = 0;       // guarded by m_productionMutex

    std::mutex m_threadMutex;
    std::condition_variable m_wake;
    bool m_stopRequested = false;
    std::thread m_thread;
};

} // namespace Zerlane::sim
