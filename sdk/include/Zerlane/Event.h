#pragma once

#include <algorithm>
#include <functional>
#include <mutex>
#include <vector>

namespace Zerlane {

// Receiver of one kind of event. Handlers are not owned by the event: the caller keeps the handler
// alive until it has disconnected it.
template <class Source, class Data>
class EventHandler {
public:
    virtual ~EventHandler() = default;
    virtual void handle(Source source, Data data) = 0;
};

// Calls a member function: void (Object::*)(Source, Data).
template <class Source, class Data, class Object>
class MethodHandler : public EventHandler<Source, Data> {
public:
    using Method = void (Object::*)(Source, Data);
    MethodHandler(Object* object, Method method) : m_object(object), m_method(method) {}
    void handle(Source source, Data data) override { (m_object->*m_method)(source, data); }

private:
    Object* m_object;
    Method m_method;
};

// Calls any callable: convenient for tools and tests.
template <class Source, class Data>
class FunctionHandler : public EventHandler<Source, Data> {
public:
    explicit FunctionHandler(std::function<void(Source, Data)> function) : m_function(std::move(function)) {}
    void handle(Source source, Data data) override { m_function(source, data); }

private:
    std::function<void(Source, Data)> m_function;
};

// One event of a context, device or node.
//
// Threading: every handler runs on the thread that is inside Context::run(), one at a time.
// connect() and disconnect() may be called from any thread; disconnect() returns only once the
// handler is no longer running (unless it is called from inside that very handler), so the caller
// may delete the handler right after.
template <class Source, class Data>
class Event {
public:
    using Handler = EventHandler<Source, Data>;

    void connect(Handler* handler)
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        if (handler && std::find(m_handlers.begin(), m_handlers.end(), handler) == m_handlers.end())
            m_handlers.push_back(handler);
    }

    void disconnect(Handler* handler)
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        m_handlers.erase(std::remove(m_handlers.begin(), m_handlers.end(), handler), m_handlers.end());
    }

    bool hasHandlers() const
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        return !m_handlers.empty();
    }

    // Library use only: called by the context's dispatcher on the run() thread.
    void fire(const Source& source, const Data& data)
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        const std::vector<Handler*> handlers = m_handlers; // a handler may disconnect itself
        for (Handler* handler : handlers) {
            if (std::find(m_handlers.begin(), m_handlers.end(), handler) != m_handlers.end())
                handler->handle(source, data);
        }
    }

private:
    mutable std::recursive_mutex m_mutex;
    std::vector<Handler*> m_handlers;
};

} // namespace Zerlane
