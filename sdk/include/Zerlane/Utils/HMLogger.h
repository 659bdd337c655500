#pragma once

#include "Zerlane/Export.h"

#include <functional>
#include <string>

namespace Zerlane::Utils {

// The library's log: one line per message on stderr, and appended to the file named by
// ZERLANE_LOG_FILE when that is set. instance() takes a reference, release() gives it back.
// Thread-safe.
class ZERLANE_API HMLogger {
public:
    enum Level { Info = 0, Warning = 1, Error = 2 };
    using Listener = std::function<void(Level, const std::string&)>;

    static HMLogger* instance();
    void release();

    void info(const std::string& message);
    void warning(const std::string& message);
    void error(const std::string& message);
    void log(Level level, const std::string& message);

    // Every message is also handed to the listener (tests read the log this way). Returns an id
    // for removeListener.
    int addListener(Listener listener);
    void removeListener(int id);
    // Turns the stderr copy off or on (tests that expect many warnings keep their output short).
    void setEchoToStderr(bool echo);

    static std::string levelName(Level level);

private:
    HMLogger();
    ~HMLogger();
    struct Private;
    Private* d;
    friend struct HMLoggerAccess;
};

} // namespace Zerlane::Utils
