#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace Zerlane::detail {

// The event queue of one context: producers (drivers, device threads, callers of the API) post actions
// from any thread; Context::run() takes them one at a time and runs them on its own thread.
class EventQueue {
public:
    using Action = std::function<void()>;

    void post(Action action);
    // Posts the action unless one with the same key is still waiting (repeated property changes of the
    // same property collapse into one event).
    void postOnce(const std::string& key, Action action);

    // Makes the current or next wait return without an action. Sticky until a wait consumes it.
    void quit();
    // Makes the current or next wait throw TransportException(message).
    void fail(const std::string& message);

    // Blocks until an action is ready (returned), quit() was called (an empty action), or the transport
    // failed (throws TransportException).
    Action waitNext();

    void clear();
    std::size_t size() const;

private:
    struct Item {
        Action action;
        std::string key;
    };

    mutable std::mutex m_mutex;
    std::condition_variable m_ready;
    std::deque<Item> m_items;
    std::set<std::string> m_pendingKeys;
    bool m_quit = false;
    std::optional<std::string> m_failure;
};

} // namespace Zerlane::detail
