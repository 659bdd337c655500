#pragma once

#include "Zerlane/AudioNode.h"
#include "Zerlane/ColorNode.h"
#include "Zerlane/DepthNode.h"

#include <deque>
#include <mutex>
#include <optional>
#include <variant>

namespace Zerlane::detail {

// The undelivered samples of one node in one context. At most CAPACITY wait; when another arrives the
// oldest waiting one is discarded and counted, and the count goes to the next sample delivered. So a
// slow consumer sees dropped frames, never a growing queue.
class SampleQueue {
public:
    using Sample = std::variant<DepthNode::NewSampleReceivedData, ColorNode::NewSampleReceivedData,
                                AudioNode::NewSampleReceivedData>;
    static constexpr std::size_t CAPACITY = 2;

    // Returns true when the queue holds one more sample than before (the caller then schedules one
    // delivery); false when the sample took the place of a discarded one.
    bool push(Sample&& sample);
    // The oldest waiting sample with its dropped counts filled in, if any.
    std::optional<Sample> pop();
    // Forgets the waiting samples (streaming stopped); they do not count as dropped.
    void clear();

    std::size_t waiting() const;
    int32_t totalDropped() const;

private:
    mutable std::mutex m_mutex;
    std::deque<Sample> m_samples;
    int32_t m_droppedSinceDelivery = 0;
    int32_t m_totalDropped = 0;
};

} // namespace Zerlane::detail
