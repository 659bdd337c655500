#include "views/CameraViewContext.h"

#include "events/CameraManager.h"

CameraViewContext::CameraViewContext(CameraManager* manager)
    : m_manager(manager)
{
}

bool CameraViewContext::streamingStopped() const
{
    return m_manager->streamingState() == CameraManager::Stopped;
}

qint64 CameraViewContext::relativeTime(quint64 time) const
{
    return m_manager->relativeTime(time);
}

void CameraViewContext::lockBuffers()
{
    m_manager->lockBuffers();
}

void CameraViewContext::unlockBuffers()
{
    m_manager->unlockBuffers();
}

DisplayPreferences CameraViewContext::preferences() const
{
    return m_manager->displayPreferences();
}
