#pragma once

#include <QString>

// The viewer's command line. parse() stores what it finds in the start-up options.
class CommandLine {
public:
    static const char* usageText();
    // Walks argv (the program name included, which matches nothing). environmentPort is the port taken
    // from ZERLANE_SERVER_PORT_NUMBER (0: none). Returns true when the usage must be shown instead of
    // starting: "--help"/"-h" anywhere before, or "--port"/"-p" as the last argument.
    static bool parse(int argc, const char* const* argv, int environmentPort);
};
