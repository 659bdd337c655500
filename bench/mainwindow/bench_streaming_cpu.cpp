// CPU used by the whole viewer while the simulated camera streams with no view open, against the
// camera library streaming the same registered nodes with nobody watching (the simulator's own cost),
// measured one after the other in the same run. Prints both as a share of one core and the difference.

#include "app/shared/StartupOptions.h"
#include "app/ViewerMain.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "mainwindow/RecordingThread.h"
#include "mainwindow/ZerlaneViewer.h"
#include "worker/PostponedCalls.h"
#include "worker/WorkingThread.h"

#include "Zerlane/Zerlane.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

double processCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Share of one core used while `work` runs for `seconds` of wall time.
template <class Work>
double coreShare(double seconds, Work work)
{
    const double cpuBefore = processCpuSeconds();
    QElapsedTimer wall;
    wall.start();
    work(seconds);
    return (processCpuSeconds() - cpuBefore) / (double(wall.elapsed()) / 1000.0);
}

// Runs the GUI event loop, sleeping when idle as the program does.
void pumpEvents(double seconds)
{
    QEventLoop loop;
    QTimer::singleShot(int(seconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
}

double libraryOnly(double seconds)
{
    Zerlane::Context context = Zerlane::Context::createStandalone();
    for (const Zerlane::Device& device : context.getDevices()) {
        for (const Zerlane::Node& node : device.getNodes())
            context.registerNode(node);
    }
    std::thread loop([&] { context.run(); });
    context.startNodes();
    const double share = coreShare(seconds, [](double s) { QThread::msleep(unsigned(s * 1000)); });
    context.stopNodes();
    context.quit();
    loop.join();
    return share;
}

double wholeViewer(double seconds)
{
    ZerlaneViewer* window = ViewerMain::startProgram(qApp);
    CameraManager* manager = CameraManager::instance();
    pumpEvents(1.0);
    for (NodeData* node : manager->nodes())
        manager->registerNode(node, true);
    emit window->startStreaming();
    pumpEvents(1.0);
    const double share = coreShare(seconds, pumpEvents);
    emit window->stopStreaming();
    pumpEvents(0.5);
    ViewerMain::shutDown();
    return share;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const double seconds = argc > 1 ? std::atof(argv[1]) : 10.0;
    StartupOptions::setStandalone(true);
    const double baseline = libraryOnly(seconds);
    const double viewer = wholeViewer(seconds);
    std::printf("camera library streaming alone: %.1f%% of one core\n", baseline * 100);
    std::printf("whole viewer, no view open:     %.1f%% of one core\n", viewer * 100);
    std::printf("viewer's own cost:              %.1f%% of one core (target: under 10%%)\n", (viewer - baseline) * 100);
    return 0;
}
