#pragma once

#include "SampleCodec.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace Zerlane::server {

// What waits to be written to one client: messages (replies, notices) in order, and per node at most
// SAMPLES_PER_NODE samples. A sample that does not fit pushes out the oldest waiting one of its node,
// and that drop is added to the dropped count of the next sample sent. So a client that reads slowly
// costs the server two samples per node and never slows anyone else down.
class SessionOutbox {
public:
    static constexpr std::size_t SAMPLES_PER_NODE = 2;

    struct Item {
        std::string message;                                    // a framed message, or
        std::shared_ptr<const wire::SampleCodec::Encoded> sample; // a sample
        int32_t dropped = 0;                                    // samples of its node dropped before it
    };

    explicit SessionOutbox(std::size_t maxMessageBytes) : m_maxMessageBytes(maxMessageBytes) {}

    // False when the client has left more than maxMessageBytes of messages unread.
    bool pushMessage(std::string message);
    void offerSample(uint32_t node, std::shared_ptr<const wire::SampleCodec::Encoded> sample);
    // The node no longer streams to this client: its waiting samples and drops are forgotten.
    void forgetNode(uint32_t node);

    // Blocks until there is something to write (messages first, then the nodes' samples in turn), or
    // returns nothing once closed.
    std::optional<Item> next();
    void close();

    std::size_t waitingSamples(uint32_t node) const;
    int64_t droppedTotal() const;

private:
    struct NodeSlot {
        std::deque<std::shared_ptr<const wire::SampleCodec::Encoded>> samples;
        int32_t dropped = 0;
    };

    const std::size_t m_maxMessageBytes;
    mutable std::mutex m_mutex;
    std::condition_variable m_ready;
    std::deque<std::string> m_messages;
    std::size_t m_messageBytes = 0;
    std::map<uint32_t, NodeSlot> m_nodes;
    uint32_t m_lastNode = 0; // round robin between nodes
    int64_t m_droppedTotal = 0;
    bool m_closed = false;
};

} // namespace Zerlane::server
