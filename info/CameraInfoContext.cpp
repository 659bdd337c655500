#include "info/CameraInfoContext.h"

#include "app/shared/StartupOptions.h"
#include "events/CameraManager.h"

#include <QString>

CameraInfoContext::CameraInfoContext(CameraManager* manager, WorkingThread* worker)
    : m_manager(manager)
    , m_worker(worker)
{
}

bool CameraInfoContext::setProperty(DeviceNodeBufferData* record, const QString& name,
                                    const Zerlane::PropertyValue& value)
{
    return std::visit(
        [&](auto typed) {
            using T = decltype(typed);
            if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, int32_t> || std::is_same_v<T, float>
                          || std::is_same_v<T, Zerlane::ExposureAuto>)
                return m_manager->setProperty<T>(record, name, typed);
            else
                return false; // the panels edit no other type
        },
        value);
}

Zerlane::PropertyValue CameraInfoContext::property(DeviceNodeBufferData* record, const QString& name,
                                                   Zerlane::PropertyType type)
{
    switch (type) {
    case Zerlane::PropertyType::Bool:
        return m_manager->getProperty<bool>(record, name);
    case Zerlane::PropertyType::Int:
        return m_manager->getProperty<int32_t>(record, name);
    case Zerlane::PropertyType::Float:
        return m_manager->getProperty<float>(record, name);
    case Zerlane::PropertyType::ExposureAuto:
        return m_manager->getProperty<Zerlane::ExposureAuto>(record, name);
    default:
        return Zerlane::PropertyValue(); // not an edited type
    }
}

std::recursive_mutex& CameraInfoContext::dataLock()
{
    return m_manager->mutex();
}

Zerlane::DepthNode::Configuration CameraInfoContext::depthConfiguration(const NodeData* node) const
{
    return m_manager->depthConfiguration(node);
}

Zerlane::ColorNode::Configuration CameraInfoContext::colorConfiguration(const NodeData* node) const
{
    return m_manager->colorConfiguration(node);
}

Zerlane::AudioNode::Configuration CameraInfoContext::audioConfiguration(const NodeData* node) const
{
    return m_manager->audioConfiguration(node);
}

WorkingThread* CameraInfoContext::worker() const
{
    return m_worker;
}

bool CameraInfoContext::showHidden() const
{
    return StartupOptions::showHidden();
}
