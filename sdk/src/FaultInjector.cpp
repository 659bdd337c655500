#include "Zerlane/plugin/FaultInjector.h"

#include "Zerlane/Exceptions.h"

#include <atomic>
#include <map>
#include <mutex>

namespace Zerlane::plugin {

namespace {

struct Fault {
    FaultInjector::Kind kind;
    std::string message;
    int remaining; // < 0: until cleared
};

struct Faults {
    std::mutex mutex;
    std::map<std::string, Fault> byOperation;
    std::atomic<bool> any {false}; // lets check() skip the lock when nothing is injected
};

Faults& faults()
{
    static Faults instance;
    return instance;
}

[[noreturn]] void raise(FaultInjector::Kind kind, const std::string& message)
{
    switch (kind) {
    case FaultInjector::Kind::Argument: throw ArgumentException(message);
    case FaultInjector::Kind::InvalidOperation: throw InvalidOperationException(message);
    case FaultInjector::Kind::Timeout: throw TimeoutException(message);
    case FaultInjector::Kind::Transport: throw TransportException(message);
    case FaultInjector::Kind::Exception: break;
    }
    throw Exception(message);
}

} // namespace

void FaultInjector::inject(const std::string& operation, Kind kind, const std::string& message, int count)
{
    if (count == 0)
        return;
    Faults& f = faults();
    std::lock_guard<std::mutex> lock(f.mutex);
    f.byOperation[operation] = Fault {kind, message, count};
    f.any = true;
}

void FaultInjector::clear()
{
    Faults& f = faults();
    std::lock_guard<std::mutex> lock(f.mutex);
    f.byOperation.clear();
    f.any = false;
}

void FaultInjector::check(const std::string& operation)
{
    Faults& f = faults();
    if (!f.any.load(std::memory_order_relaxed))
        return;
    Kind kind;
    std::string message;
    {
        std::lock_guard<std::mutex> lock(f.mutex);
        auto it = f.byOperation.find(operation);
        if (it == f.byOperation.end())
            return;
        kind = it->second.kind;
        message = it->second.message;
        if (it->second.remaining > 0 && --it->second.remaining == 0)
            f.byOperation.erase(it);
        f.any = !f.byOperation.empty();
    }
    raise(kind, message);
}

} // namespace Zerlane::plugin
