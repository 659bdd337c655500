// Paint rates of the views of a typical session while the simulated camera streams at 30 frames a
// second, in the main window at its default size, each against the frame rate of the same view over the
// same seconds: ratio 1.00 means every frame that reached the view was painted. Two sets, one after the
// other: the three flat views Depth, Confidence and Color; then the same with Vertices Floating Point in
// 3D added. Also prints the process's CPU as a share of one core for each set.
// Needs a display with OpenGL: run it under xvfb-run (Mesa llvmpipe).

#include "app/ViewerMain.h"
#include "camera/BufferData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "mainwindow/ZerlaneViewer.h"
#include "support/ViewerTestSupport.h"
#include "views/BufferDisplayWidget.h"
#include "views/BufferSubWindow.h"
#include "views/MdiArea.h"

#include <QAction>
#include <QApplication>
#include <QEventLoop>
#include <QRegularExpression>

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

double processCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

void pumpEvents(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

BufferData* bufferOf(uint32_t type)
{
    for (NodeData* node : CameraManager::instance()->nodes()) {
        for (BufferData* buffer : node->buffers) {
            if (buffer->type == type)
                return buffer;
        }
    }
    return nullptr;
}

struct Rates {
    double frame = 0, paint = 0;
    int samples = 0;
};

// Adds the rates of an info line "Frame rate : 30      Event rate : 30      Paint rate : 30".
bool addInfoLine(const QString& info, Rates* rates)
{
    static const QRegularExpression pattern("^Frame rate : +(\\d+) .*Paint rate : +(\\d+)$");
    const QRegularExpressionMatch match = pattern.match(info);
    if (!match.hasMatch())
        return false;
    rates->frame += match.captured(1).toDouble();
    rates->paint += match.captured(2).toDouble();
    ++rates->samples;
    return true;
}

// Opens the views, lets them settle, then reads every view's info line once a second, half-way between
// two of the main window's refreshes, and the process's CPU over the same seconds.
void measure(ZerlaneViewer* window, const char* title, const std::vector<uint32_t>& types, int seconds)
{
    std::vector<BufferDisplayWidget*> views;
    for (uint32_t type : types) {
        BufferSubWindow* sub = window->findChild<MdiArea*>("mdiArea")->openView(bufferOf(type));
        views.push_back(qobject_cast<BufferDisplayWidget*>(sub->widget()));
    }
    window->findChild<MdiArea*>("mdiArea")->tileSubWindows();
    pumpEvents(3500);

    std::vector<Rates> rates(views.size());
    const double cpuBefore = processCpuSeconds();
    QElapsedTimer wall;
    wall.start();
    for (int s = 0; s < seconds; ++s) {
        pumpEvents(1000);
        for (std::size_t v = 0; v < views.size(); ++v)
            addInfoLine(views[v]->info(), &rates[v]);
    }
    const double cpu = (processCpuSeconds() - cpuBefore) / (double(wall.elapsed()) / 1000.0);

    std::printf("\n%s\n", title);
    for (std::size_t v = 0; v < views.size(); ++v) {
        const Rates& r = rates[v];
        const QString name = bufferOf(types[v])->typeName();
        if (r.samples == 0) {
            std::printf("  %-26s no rates shown\n", qPrintable(name));
            continue;
        }
        std::printf("  %-26s frame rate %5.1f  paint rate %5.1f  paint/frame %5.2f\n", qPrintable(name),
                    r.frame / r.samples, r.paint / r.samples, r.paint / r.frame);
    }
    std::printf("  process CPU: %.0f%% of one core\n", cpu * 100);
    window->findChild<MdiArea*>("mdiArea")->closeAllSubWindows();
    pumpEvents(500);
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        std::printf("bench_four_views needs a display with OpenGL: run it under xvfb-run\n");
        return 0;
    }
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication application(argc, argv);
    const int seconds = argc > 1 && std::atoi(argv[1]) > 0 ? std::atoi(argv[1]) : 10;
    ViewerTest::isolateSettings();
    ViewerTest::resetStartupOptions();
    StartupOptions::setStandalone(true);
    Zerlane::Sim::Control::reset(); // free-running at the camera's own rate

    ZerlaneViewer* window = ViewerMain::startProgram(&application);
    window->resize(1280, 800);
    CameraManager* manager = CameraManager::instance();
    if (!ViewerTest::waitFor([&] { return manager->nodes().size() == 3; })) {
        std::printf("the simulated camera did not appear\n");
        return 1;
    }
    for (NodeData* node : manager->nodes()) {
        if (!node->node.is<Zerlane::AudioNode>())
            manager->registerNode(node, true);
    }
    window->findChild<QAction*>("actionStartNodes")->trigger();
    pumpEvents(1000);

    std::printf("Simulated camera at VGA 30 fps, main window 1280x800, %d s per set", seconds);
    measure(window, "Three flat views", {BufferData::Depth, BufferData::Confidence, BufferData::Color}, seconds);
    measure(window, "Three flat views and one 3D view",
            {BufferData::Depth, BufferData::Confidence, BufferData::Color, BufferData::VerticesFloatingPoint}, seconds);

    window->findChild<QAction*>("actionStopNodes")->trigger();
    pumpEvents(500);
    ViewerMain::shutDown();
    return 0;
}
