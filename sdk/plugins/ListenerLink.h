#pragma once

#include "Zerlane/plugin/Driver.h"

#include <mutex>

namespace Zerlane::sim {

// The library's listener of one open driver, shared with its devices and nodes. detach() waits for a call
// in progress, so no call reaches the library after the driver is closed.
class ListenerLink {
public:
    explicit ListenerLink(plugin::DriverListener* listener) : m_listener(listener) {}

    void detach()
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        m_listener = nullptr;
    }

    template <class Call>
    void notify(Call&& call)
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        if (m_listener)
            call(*m_listener);
    }

private:
    std::recursive_mutex m_mutex;
    plugin::DriverListener* m_listener = nullptr;
};

} // namespace Zerlane::sim
