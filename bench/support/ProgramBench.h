#pragma once

// Helpers of the benchmarks that run the whole program with the simulated camera.

#include "app/ViewerMain.h"
#include "app/shared/StartupOptions.h"
#include "camera/NodeData.h"
#include "events/CameraManager.h"

#include "Zerlane/Zerlane.h"

#include <QApplication>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

namespace ProgramBench {

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Runs the GUI event loop until `done`.
template <class Predicate>
void pumpUntil(Predicate done)
{
    while (!done()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::usleep(200);
    }
}

// The first depth node's record, once the camera has been discovered.
inline NodeData* depthNode()
{
    NodeData* found = nullptr;
    pumpUntil([&] {
        for (NodeData* node : CameraManager::instance()->nodes()) {
            if (node->node.is<Zerlane::DepthNode>())
                found = node;
        }
        return found != nullptr;
    });
    return found;
}

// Runs the registered benchmarks inside the running program (standalone, the simulated camera), with
// settings in a temporary folder, never the user's.
inline int runInProgram(int argc, char** argv)
{
    QApplication application(argc, argv);
    QTemporaryDir settings;
    QStandardPaths::setTestModeEnabled(true);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    StartupOptions::setStandalone(true);
    ViewerMain::startProgram(&application);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    ViewerMain::shutDown();
    return 0;
}

} // namespace ProgramBench
