#include "camera/DeviceNodeBufferData.h"

DeviceNodeBufferData::DeviceNodeBufferData(uint32_t kind) : m_kind(kind) {}

DeviceNodeBufferData::~DeviceNodeBufferData()
{
    modelIndex = QModelIndex();
}

void DeviceNodeBufferData::incrementActive()
{
    ++m_activeCount;
}

void DeviceNodeBufferData::decrementActive()
{
    --m_activeCount;
}
