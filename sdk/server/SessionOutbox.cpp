#include "SessionOutbox.h"

namespace Zerlane::server {

bool SessionOutbox::pushMessage(std::string message)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_closed)
            return true;
        if (m_messageBytes + message.size() > m_maxMessageBytes)
            return false;
        m_messageBytes += message.size();
        m_messages.push_back(std::move(message));
    }
    m_ready.notify_one();
    return true;
}

void SessionOutbox::offerSample(uint32_t node, std::shared_ptr<const wire::SampleCodec::Encoded> sample)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_closed)
            return;
        NodeSlot& slot = m_nodes[node];
        if (slot.samples.size() >= SAMPLES_PER_NODE) {
            slot.samples.pop_front();
            ++slot.dropped;
            ++m_droppedTotal;
        }
        slot.samples.push_back(std::move(sample));
    }
    m_ready.notify_one();
}

void SessionOutbox::forgetNode(uint32_t node)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_nodes.erase(node);
}

std::optional<SessionOutbox::Item> SessionOutbox::next()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        if (m_closed)
            return std::nullopt;
        if (!m_messages.empty()) {
            Item item;
            item.message = std::move(m_messages.front());
            m_messages.pop_front();
            m_messageBytes -= item.message.size();
            return item;
        }
        // The first node after the one served last that has a sample waiting.
        auto pick = m_nodes.upper_bound(m_lastNode);
        for (std::size_t tried = 0; tried < m_nodes.size(); ++tried, ++pick) {
            if (pick == m_nodes.end())
                pick = m_nodes.begin();
            if (!pick->second.samples.empty())
                break;
        }
        if (pick != m_nodes.end() && !pick->second.samples.empty()) {
            NodeSlot& slot = pick->second;
            Item item;
            item.sample = std::move(slot.samples.front());
            slot.samples.pop_front();
            item.dropped = slot.dropped;
            slot.dropped = 0;
            m_lastNode = pick->first;
            return item;
        }
        m_ready.wait(lock);
    }
}

void SessionOutbox::close()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_closed = true;
        m_messages.clear();
        m_nodes.clear();
    }
    m_ready.notify_all();
}

std::size_t SessionOutbox::waitingSamples(uint32_t node) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_nodes.find(node);
    return it == m_nodes.end() ? 0 : it->second.samples.size();
}

int64_t SessionOutbox::droppedTotal() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_droppedTotal;
}

} // namespace Zerlane::server
