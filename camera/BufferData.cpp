#include "camera/BufferData.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

struct TypeInfo {
    const char* name;
    uint32_t capacity;
    const char* enableProperty; // the node property that switches the kind's map on
};

// Capacities fit a 640 x 480 depth frame and a 1280 x 720 colour frame.
constexpr TypeInfo kTypes[] = {
    {"Color", 3686400, "enableColorMap"},
    {"Phase", 614400, "enablePhaseMap"},
    {"Confidence", 614400, "enableConfidenceMap"},
    {"Depth", 1843200, "enableDepthMap"},
    {"Depth Floating Point", 3686400, "enableDepthMapFloatingPoint"},
    {"Vertices", 1843200, "enableVertices"},
    {"Vertices Floating Point", 3686400, "enableVerticesFloatingPoint"},
    {"UV", 2457600, "enableUvMap"},
    {"Standard Deviation", 1228800, "enableDepthMapFloatingPoint"},
    {"Combined", 614400, "enablePhaseMap"},
    {"Audio", 192000, ""},
};
constexpr uint32_t kTypeCount = sizeof(kTypes) / sizeof(kTypes[0]);

// The block the allocator returned is kept in the pointer-sized word just before the aligned address.
uint8_t* allocateAligned(size_t bytes)
{
    constexpr size_t spare = sizeof(void*) - 1 + BufferData::DataAlignment;
    auto* raw = static_cast<uint8_t*>(std::malloc(bytes + spare));
    if (!raw)
        throw std::bad_alloc();
    const uintptr_t first = reinterpret_cast<uintptr_t>(raw) + sizeof(void*);
    const uintptr_t aligned = (first + BufferData::DataAlignment - 1) & ~uintptr_t(BufferData::DataAlignment - 1);
    auto* result = reinterpret_cast<uint8_t*>(aligned);
    std::memcpy(result - sizeof(void*), &raw, sizeof(void*));
    return result;
}

void freeAligned(uint8_t* block)
{
    if (!block)
        return;
    void* raw = nullptr;
    std::memcpy(&raw, block - sizeof(void*), sizeof(void*));
    std::free(raw);
}

} // namespace

BufferData::BufferData(NodeData* node, uint32_t type) : DeviceNodeBufferData(KindBuffer), node(node), type(type)
{
    data[0] = allocateAligned(capacity(type));
    data[1] = allocateAligned(capacity(type));
}

BufferData::~BufferData()
{
    freeAligned(data[0]);
    freeAligned(data[1]);
}

uint32_t BufferData::capacity(uint32_t type)
{
    return type < kTypeCount ? kTypes[type].capacity : 0;
}

QString BufferData::typeName(uint32_t type)
{
    return QString::fromLatin1(type < kTypeCount ? kTypes[type].name : "Unknown");
}

QString BufferData::typeName() const
{
    return typeName(type);
}

QString BufferData::enableProperty(uint32_t type)
{
    return QString::fromLatin1(type < kTypeCount ? kTypes[type].enableProperty : "");
}

int BufferData::flipWriteSlot()
{
    QMutexLocker locker(&dataMutex);
    writeSlot = 1 - writeSlot;
    return writeSlot;
}
