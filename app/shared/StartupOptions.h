#pragma once

#include <QtGlobal>

// The command-line options, kept for the whole process. The entry point sets them while it parses the
// command line; the rest of the program reads them.
class StartupOptions {
public:
    static bool standalone();
    static void setStandalone(bool on);
    static quint16 port();
    static void setPort(quint16 port);
    static bool disableDepth();
    static void setDisableDepth(bool on);
    static bool disableColor();
    static void setDisableColor(bool on);
    static bool disableAudio();
    static void setDisableAudio(bool on);
    static bool showHidden();
    static void setShowHidden(bool on);
    static bool disablePopups();
    static void setDisablePopups(bool on);
};
