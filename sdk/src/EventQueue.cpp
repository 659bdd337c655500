#include "EventQueue.h"

#include "Zerlane/Exceptions.h"

namespace Zerlane::detail {

void EventQueue::post(Action action)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_items.push_back(Item {std::move(action), {}});
    }
    m_ready.notify_one();
}

void EventQueue::postOnce(const std::string& key, Action action)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_pendingKeys.insert(key).second)
            return;
        m_items.push_back(Item {std::move(action), key});
    }
    m_ready.notify_one();
}

void EventQueue::quit()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_quit = true;
    }
    m_ready.notify_all();
}

void EventQueue::fail(const std::string& message)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_failure = message;
    }
    m_ready.notify_all();
}

EventQueue::Action EventQueue::waitNext()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_ready.wait(lock, [this] { return m_quit || m_failure || !m_items.empty(); });
    if (m_failure) {
        const std::string message = std::move(*m_failure);
        m_failure.reset();
        throw TransportException(message);
    }
    if (m_quit) {
        m_quit = false;
        return {};
    }
    Item item = std::move(m_items.front());
    m_items.pop_front();
    if (!item.key.empty())
        m_pendingKeys.erase(item.key);
    return std::move(item.action);
}

void EventQueue::clear()
{
    std::deque<Item> dropped;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        dropped.swap(m_items);
        m_pendingKeys.clear();
    }
    // The actions (and the handles they hold) are destroyed outside the lock.
}

std::size_t EventQueue::size() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_items.size();
}

} // namespace Zerlane::detail
