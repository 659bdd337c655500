#pragma once

#include "Zerlane/Node.h"

namespace Zerlane {

// A stream source the library knows of but cannot drive.
class ZERLANE_API UnsupportedNode : public Node {
public:
    static constexpr NodeKind Kind = NodeKind::Unsupported;

    enum Reason : int32_t {
        REASON_UNKNOWN = 0,
        REASON_UNSUPPORTED_MEDIA = 1,
        REASON_FIRMWARE_UPDATE_REQUIRED = 2,
        REASON_NO_DRIVER = 3,
    };

    UnsupportedNode() = default;
    explicit UnsupportedNode(const Node& node) : Node(node, Kind) {}

    static std::string Reason_toString(Reason reason);
    Reason getReason() const;
};

} // namespace Zerlane
