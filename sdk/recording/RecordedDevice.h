#pragma once

#include "Zerlane/Node.h"
#include "Zerlane/Property.h"
#include "Zerlane/plugin/TypeSpec.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Zerlane::recording {

// What a recording keeps of one camera so that playback presents the same camera: identity, type,
// property values, and per node the configurations offered and the one in use.
struct RecordedDevice {
    struct Property {
        plugin::PropertySpec spec;
        PropertyValue value;
    };
    struct Node {
        NodeKind kind = NodeKind::Depth;
        std::string typeName;
        std::string serial;
        int32_t vid = 0, pid = 0, revision = 0, mediaInterface = 0;
        float range = 0.f;
        std::vector<Property> properties;
        std::vector<PropertyValue> configurations;
        PropertyValue configuration;
    };

    int32_t model = 0;
    std::string typeName;
    std::string serial;
    int32_t usbBackendVersion = 0, tofControllerVersion = 0;
    std::vector<Property> properties;
    std::vector<Node> nodes;
};

} // namespace Zerlane::recording
