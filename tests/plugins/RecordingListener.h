#pragma once

#include "Zerlane/plugin/Driver.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

// A DriverListener that writes down every report, for checks from the test thread.
class RecordingListener : public Zerlane::plugin::DriverListener {
public:
    struct Report {
        std::string what;   // "deviceAdded", "deviceRemoved", "nodeAdded", "nodeRemoved", "propertyChanged", ...
        std::string detail; // serial, property name or message
        Zerlane::NodeKind kind = Zerlane::NodeKind::Unsupported;
    };

    void deviceAdded(const std::shared_ptr<Zerlane::plugin::DeviceDriver>& device) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_devices.push_back(device);
        m_reports.push_back({"deviceAdded", device->serialNumber()});
    }
    void deviceRemoved(const std::shared_ptr<Zerlane::plugin::DeviceDriver>& device) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::erase(m_devices, device);
        m_reports.push_back({"deviceRemoved", device->serialNumber()});
    }
    void nodeAdded(Zerlane::plugin::DeviceDriver* device, const std::shared_ptr<Zerlane::plugin::NodeDriver>& node) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_reports.push_back({"nodeAdded", device->serialNumber(), node->kind()});
        m_lastNode = node;
    }
    void nodeRemoved(Zerlane::plugin::DeviceDriver* device, const std::shared_ptr<Zerlane::plugin::NodeDriver>& node) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_reports.push_back({"nodeRemoved", device->serialNumber(), node->kind()});
    }
    void propertyChanged(Zerlane::plugin::DeviceDriver*, Zerlane::plugin::NodeDriver* node, const std::string& name) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_reports.push_back({"propertyChanged", name, node ? node->kind() : Zerlane::NodeKind::Unsupported});
    }
    void transportFailed(const std::string& message) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_reports.push_back({"transportFailed", message});
    }

    std::vector<Report> takeReports()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_reports, {});
    }
    std::vector<std::shared_ptr<Zerlane::plugin::DeviceDriver>> devices()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_devices;
    }
    std::shared_ptr<Zerlane::plugin::DeviceDriver> device(const std::string& serial)
    {
        for (const auto& d : devices())
            if (d->serialNumber() == serial)
                return d;
        return nullptr;
    }
    std::shared_ptr<Zerlane::plugin::NodeDriver> lastAddedNode()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_lastNode;
    }

private:
    std::mutex m_mutex;
    std::vector<Report> m_reports;
    std::vector<std::shared_ptr<Zerlane::plugin::DeviceDriver>> m_devices;
    std::shared_ptr<Zerlane::plugin::NodeDriver> m_lastNode;
};
