#pragma once

#include "../src/Utils/BlockPool.h"
#include "FrameReader.h"
#include "zerlane_wire.pb.h"

#include "Zerlane/AudioNode.h"
#include "Zerlane/ColorNode.h"
#include "Zerlane/DepthNode.h"

#include <memory>
#include <sys/uio.h>
#include <variant>
#include <vector>

namespace Zerlane::wire {

// Samples on the wire: a SampleHeader listing the maps present, then each map's bytes as a block.
class SampleCodec {
public:
    using Sample = std::variant<DepthNode::NewSampleReceivedData, ColorNode::NewSampleReceivedData,
                                AudioNode::NewSampleReceivedData>;

    // One sample ready to send to any number of clients: the header (without the per-client dropped
    // count) and the maps' memory, which the sample keeps alive.
    struct Encoded {
        SampleHeader header;
        std::vector<iovec> blocks;
        Sample sample;
        std::size_t bytes = 0;
    };

    static std::shared_ptr<const Encoded> encode(uint32_t node, Sample&& sample);
    // The frame of one sample for one client: `prefixes` must outlive the returned buffers.
    static std::vector<iovec> buffers(const Encoded& encoded, int32_t dropped, std::string& header,
                                      std::vector<uint32_t>& prefixes);

    // Reads the blocks the header declares into one buffer from the pool and builds the sample. (The
    // simulated camera's block pool: a fresh 10 MB allocation per sample costs more in page faults than
    // the copy from the socket.)
    static Sample decode(const SampleHeader& header, FrameReader& reader, Utils::BlockPool& pool);
};

} // namespace Zerlane::wire
