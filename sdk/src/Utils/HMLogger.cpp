#include "Zerlane/Utils/HMLogger.h"

#include "Zerlane/Utils/EnvironmentVariable.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <map>
#include <mutex>
#include <vector>

namespace Zerlane::Utils {

namespace {

std::mutex& instanceMutex()
{
    static std::mutex mutex;
    return mutex;
}

HMLogger* g_instance = nullptr;
int g_references = 0;

std::string timestamp()
{
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t seconds = system_clock::to_time_t(now);
    const auto millis = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm local {};
    localtime_r(&seconds, &local);
    char text[96];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d", local.tm_year + 1900, local.tm_mon + 1,
                  local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, static_cast<int>(millis));
    return text;
}

} // namespace

struct HMLogger::Private {
    std::mutex mutex;
    std::map<int, Listener> listeners;
    int nextListenerId = 1;
    bool echo = true;
    std::string logFile = EnvironmentVariable("ZERLANE_LOG_FILE").getValue();
};

HMLogger::HMLogger() : d(new Private) {}

HMLogger::~HMLogger()
{
    delete d;
}

HMLogger* HMLogger::instance()
{
    std::lock_guard<std::mutex> lock(instanceMutex());
    if (!g_instance)
        g_instance = new HMLogger;
    ++g_references;
    return g_instance;
}

void HMLogger::release()
{
    std::lock_guard<std::mutex> lock(instanceMutex());
    if (g_instance != this || g_references <= 0)
        return;
    if (--g_references == 0) {
        delete g_instance;
        g_instance = nullptr;
    }
}

void HMLogger::info(const std::string& message)
{
    log(Info, message);
}

void HMLogger::warning(const std::string& message)
{
    log(Warning, message);
}

void HMLogger::error(const std::string& message)
{
    log(Error, message);
}

void HMLogger::log(Level level, const std::string& message)
{
    const std::string line = "[" + timestamp() + "] " + levelName(level) + ": " + message + "\n";
    std::vector<Listener> listeners;
    {
        std::lock_guard<std::mutex> lock(d->mutex);
        if (d->echo)
            std::fputs(line.c_str(), stderr);
        if (!d->logFile.empty()) {
            if (std::FILE* file = std::fopen(d->logFile.c_str(), "a")) {
                std::fputs(line.c_str(), file);
                std::fclose(file);
            }
        }
        for (const auto& entry : d->listeners)
            listeners.push_back(entry.second);
    }
    // Outside the lock, so that a listener may log in turn.
    for (const Listener& listener : listeners)
        listener(level, message);
}

int HMLogger::addListener(Listener listener)
{
    std::lock_guard<std::mutex> lock(d->mutex);
    const int id = d->nextListenerId++;
    d->listeners.emplace(id, std::move(listener));
    return id;
}

void HMLogger::removeListener(int id)
{
    std::lock_guard<std::mutex> lock(d->mutex);
    d->listeners.erase(id);
}

void HMLogger::setEchoToStderr(bool echo)
{
    std::lock_guard<std::mutex> lock(d->mutex);
    d->echo = echo;
}

std::string HMLogger::levelName(Level level)
{
    switch (level) {
    case Info: return "INFO";
    case Warning: return "WARNING";
    case Error: return "ERROR";
    }
    return "UNKNOWN";
}

} // namespace Zerlane::Utils
