#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// The library's own container names. They are the standard containers, so callers copy
// nothing when they take a list or a text.
namespace ZRI {
template <class T>
using Vector = std::vector<T>;
using String = std::string;
} // namespace ZRI

namespace Zerlane {

// Vertex in millimetres, camera frame: x right, y down, z forward. (0, 0, 0) means no measurement.
struct Vertex {
    int16_t x = 0, y = 0, z = 0;
};

// Vertex in metres, same frame. z == 0 means no measurement.
struct FPVertex {
    float x = 0.f, y = 0.f, z = 0.f;
};

// Texture coordinates into the colour image, 0..1 across it; outside that range the colour camera
// does not see the point.
struct UV {
    float u = 0.f, v = 0.f;
};

// Read-only view of one map of a sample. It shares ownership of the sample's memory, so a copy stays
// valid after the event handler returns. data() is null when the map was not produced.
template <class T>
class Pointer {
public:
    Pointer() = default;
    Pointer(std::shared_ptr<const void> owner, const T* data, int32_t size)
        : m_owner(std::move(owner)), m_data(data), m_size(data ? size : 0) {}

    const T* data() const { return m_data; }
    operator const T*() const { return m_data; }
    int32_t size() const { return m_size; }
    const T& operator[](int32_t i) const { return m_data[i]; }

private:
    std::shared_ptr<const void> m_owner;
    const T* m_data = nullptr;
    int32_t m_size = 0;
};

} // namespace Zerlane
