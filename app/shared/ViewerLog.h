#pragma once

#include <string>

// Every log line of the viewer goes through the camera library's logger, and only while that logger
// exists: it is created at start-up and may already be gone while the program shuts down.
class ViewerLog {
public:
    static void info(const std::string& message);
    static void warning(const std::string& message);
    static void error(const std::string& message);
};
