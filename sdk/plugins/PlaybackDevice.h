#pragma once

#include "PlaybackNode.h"
#include "RecordedDevice.h"
#include "RecordedValues.h"

#include "Zerlane/plugin/DeviceDriver.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Zerlane::playback {

// One recorded camera of a recording file, presented as a camera. While any of its nodes is started, a
// thread reads the file and hands each sample to its node at the recorded pace, with capture times moved
// to the present (differences between them kept to the microsecond), and starts over at the end. A read
// error, or the file gone when playback starts over, is logged naming the file and ends this camera's
// samples; the camera stays listed and nothing else is affected.
class PlaybackDevice : public plugin::DeviceDriver {
public:
    PlaybackDevice(std::string file, int index, const recording::RecordedDevice& recorded);
    ~PlaybackDevice() override;

    Device::Model model() const override { return Device::Model(m_recorded.model); }
    std::string serialNumber() const override { return m_recorded.serial; }
    int32_t usbBackendVersion() const override { return m_recorded.usbBackendVersion; }
    int32_t tofControllerVersion() const override { return m_recorded.tofControllerVersion; }
    bool overheating() const override { return false; }
    bool overheated() const override { return false; }
    std::shared_ptr<const plugin::TypeSpec> type() const override { return m_values.type(); }
    PropertyValue getProperty(const std::string& name) const override;
    void setProperty(const std::string& name, const PropertyValue& value) override;
    std::vector<std::shared_ptr<plugin::NodeDriver>> nodes() const override;

private:
    void streamingChanged();
    void play();
    bool waitUntil(std::chrono::steady_clock::time_point when);

    std::string m_file;
    int m_index;
    recording::RecordedDevice m_recorded;
    RecordedValues m_values;
    std::vector<std::shared_ptr<PlaybackNode>> m_nodes;

    std::mutex m_threadMutex; // start and stop of the thread
    std::mutex m_wakeMutex;
    std::condition_variable m_wake;
    bool m_stopRequested = false; // guarded by m_wakeMutex
    std::thread m_thread;
};

} // namespace Zerlane::playback
