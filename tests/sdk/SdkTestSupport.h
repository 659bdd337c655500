#pragma once

// Helpers of the camera library's suites: a run() thread, a thread-safe record of what handlers saw,
// node lookup and exception messages.

#include "Zerlane/Zerlane.h"

#include <QString>

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace SdkTestSupport {

using namespace Zerlane;

// Runs Context::run() on a thread of its own until stop() or destruction; records how run() ended.
class EventLoop {
public:
    explicit EventLoop(Context context) : m_context(std::move(context))
    {
        m_thread = std::thread([this] {
            try {
                m_context.run();
            } catch (const TransportException& e) {
                std::lock_guard<std::mutex> lock(m_mutex);
                m_transportError = e.what();
            }
            m_finished = true;
        });
        m_threadId = m_thread.get_id();
    }
    ~EventLoop() { stop(); }

    void stop()
    {
        if (!m_thread.joinable())
            return;
        if (!m_finished)
            m_context.quit();
        m_thread.join();
    }
    std::thread::id threadId() const { return m_threadId; }
    bool finished() const { return m_finished; }
    std::string transportError() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_transportError;
    }

private:
    Context m_context;
    std::thread m_thread;
    std::thread::id m_threadId;
    std::atomic<bool> m_finished {false};
    mutable std::mutex m_mutex;
    std::string m_transportError;
};

inline EventLoop* startLoop(std::unique_ptr<EventLoop>& holder, const Context& context)
{
    holder = std::make_unique<EventLoop>(context);
    return holder.get();
}

// What handlers saw, written on the run() thread and read by the test thread.
template <class Item>
class Recorder {
public:
    void add(Item item)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_items.push_back(std::move(item));
        m_threads.insert(std::this_thread::get_id());
    }
    std::size_t size() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_items.size();
    }
    std::vector<Item> items() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_items;
    }
    std::set<std::thread::id> threads() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_threads;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Item> m_items;
    std::set<std::thread::id> m_threads;
};

template <class Kind>
Kind nodeOf(const Device& device)
{
    for (const Node& node : device.getNodes()) {
        if (node.is<Kind>())
            return node.as<Kind>();
    }
    return Kind();
}

template <class E, class F>
QString messageOf(F&& call)
{
    try {
        call();
    } catch (const E& e) {
        return QString::fromStdString(e.what());
    } catch (const std::exception& e) {
        return QStringLiteral("<other exception: %1>").arg(e.what());
    }
    return QStringLiteral("<no exception>");
}

} // namespace SdkTestSupport
