#pragma once

#include "views/ViewContext.h"

class CameraManager;

// The views' context in the running program: the camera manager's streaming state, reference time,
// buffers lock and display preferences.
class CameraViewContext : public ViewContext {
public:
    explicit CameraViewContext(CameraManager* manager);

    bool streamingStopped() const override;
    qint64 relativeTime(quint64 time) const override;
    void lockBuffers() override;
    void unlockBuffers() override;
    DisplayPreferences preferences() const override;

private:
    CameraManager* m_manager;
};
