#include "camera/DeviceData.h"

DeviceData::DeviceData(const Zerlane::Device& device, const std::vector<Zerlane::PropertyBase>& properties)
    : DeviceNodeBufferData(KindDevice), device(device), properties(properties)
{
}

DeviceData::~DeviceData() = default;
