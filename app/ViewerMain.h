#pragma once

#include <QString>

#include <string>

// The program from start to end: options, objects, connections, threads, the event loop, shutdown.
class ViewerMain {
public:
    static int run(int argc, char** argv);

    // The "Error" dialog's text for a context that could not be opened: the message, capitalised.
    static QString contextErrorText(const std::string& message);

private:
    static void showUsage();
    static void showContextError(const QString& text);
    static void shutDown();
};
