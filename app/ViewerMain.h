#pragma once

#include <QString>

#include <memory>
#include <string>

// The program from start to end: options, objects, connections, threads, the event loop, shutdown.
class QApplication;
class QLabel;
class QMessageBox;
class RecordingThread;
class WorkingThread;
class ZerlaneThread;
class ZerlaneViewer;

class ViewerMain {
public:
    static int run(int argc, char** argv);

    // Everything after the command line: the camera manager (which opens the context: this throws
    // Zerlane::Exception when it cannot, leaving nothing started), the threads, the main window, their
    // connections; then the threads start and the window shows.
    static ZerlaneViewer* startProgram(QApplication* application);
    // The program's objects, created (the camera manager too) but neither connected nor started; the
    // worker and the recorder already belong to their own threads.
    struct Objects {
        ZerlaneThread* events;
        WorkingThread* worker;
        RecordingThread* recorder;
        ZerlaneViewer* window;
    };
    static Objects createObjects();
    // Ends the service loop if it still runs, then destroys the objects in order.
    static void shutDown();

    // The "Error" dialog's text for a context that could not be opened: the message, capitalised.
    static QString contextErrorText(const std::string& message);

    // The "Usage" box, not yet shown: its text in a fixed-pitch font, on lines kept whole.
    static std::unique_ptr<QMessageBox> usageBox();

private:
    static void keepLinesWhole(QLabel* label);
    static void showUsage();
    static void showContextError(const QString& text);
};
