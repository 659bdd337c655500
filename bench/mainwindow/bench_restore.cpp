// The automatic restore of a depth node with eight saved views and all its writable properties,
// against opening the same eight views by hand (as a double click does), in the same run, medians of
// several rounds. The restore's camera calls run on the worker; the window only opens the views.

#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "mainwindow/ZerlaneViewer.h"
#include "support/ProgramBench.h"
#include "views/BufferDisplayWidget.h"
#include "views/BufferSubWindow.h"
#include "views/MdiArea.h"
#include "worker/Settings.h"

#include "Zerlane/Zerlane.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <vector>

namespace {

constexpr int Rounds = 7;

// One after the other, each shown before the next, as double clicks in the tree open them.
void openByHand(ZerlaneViewer* window, NodeData* node)
{
    for (BufferData* buffer : node->buffers) {
        window->onAddBuffer(buffer, QPoint(20, 20), QSize(320, 300), false, 0.f, 0.f, 0.5f, 0.5f, 0.f, 0.f);
        QCoreApplication::processEvents();
    }
}

void saveWorkspaceOf(NodeData* node)
{
    Settings::clearWorkspace();
    const int device = Settings::writeDevice(node->device);
    const int saved = Settings::writeNode(node, device);
    for (BufferData* buffer : node->buffers) {
        if (buffer->subWindow)
            Settings::writeBuffer(buffer, saved, buffer->subWindow->pos(), buffer->subWindow->size(), false, 0.f,
                                  0.f, 0.5f, 0.5f, 0.f, 0.f);
    }
}

void closeViews(ZerlaneViewer* window)
{
    window->findChild<MdiArea*>("mdiArea")->closeAllSubWindows();
    QCoreApplication::processEvents();
}

void BM_RestoreEightViews(benchmark::State& state)
{
    ZerlaneViewer* window = ZerlaneViewer::instance();
    NodeData* node = ProgramBench::depthNode();
    std::vector<double> byHand;
    std::vector<double> restored;
    for (auto _ : state) {
        for (int round = 0; round < Rounds; ++round) {
            QElapsedTimer clock;
            clock.start();
            openByHand(window, node);
            byHand.push_back(double(clock.nsecsElapsed()) / 1e6);
            saveWorkspaceOf(node);
            closeViews(window);

            clock.restart();
            node->incrementActive(); // as the window does before handing a node to the worker
            emit window->nodeAdded(node);
            ProgramBench::pumpUntil([&] { return node->activeCount() == 0; });
            QCoreApplication::processEvents();
            restored.push_back(double(clock.nsecsElapsed()) / 1e6);
            closeViews(window);
        }
    }
    state.counters["views"] = double(node->buffers.size());
    state.counters["by_hand_median_ms"] = ProgramBench::median(byHand);
    state.counters["restore_median_ms"] = ProgramBench::median(restored);
    state.counters["ratio"] = ProgramBench::median(restored) / ProgramBench::median(byHand);
}

BENCHMARK(BM_RestoreEightViews)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return ProgramBench::runInProgram(argc, argv);
}
