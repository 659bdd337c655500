#pragma once

#include "info/InfoContext.h"

class CameraManager;

// The info panels' context in the running program: the camera manager's property operations, lock
// and stored configurations, the worker thread, and the start-up option for hidden properties.
class CameraInfoContext : public InfoContext {
public:
    CameraInfoContext(CameraManager* manager, WorkingThread* worker);

    bool setProperty(DeviceNodeBufferData* record, const QString& name, const Zerlane::PropertyValue& value) override;
    Zerlane::PropertyValue property(DeviceNodeBufferData* record, const QString& name,
                                    Zerlane::PropertyType type) override;
    std::recursive_mutex& dataLock() override;
    Zerlane::DepthNode::Configuration depthConfiguration(const NodeData* node) const override;
    Zerlane::ColorNode::Configuration colorConfiguration(const NodeData* node) const override;
    Zerlane::AudioNode::Configuration audioConfiguration(const NodeData* node) const override;
    WorkingThread* worker() const override;
    bool showHidden() const override;

private:
    CameraManager* m_manager;
    WorkingThread* m_worker;
};
