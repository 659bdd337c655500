// Time to show the depth node's page in the info panel (facts, range, property editors and the
// configuration box, read from the simulated camera), median of 100 selections, against the time to
// install a plain form with the same number of label rows in a scroll area of the same size, measured
// in the same run. The ratio is what the page's camera reads and editors cost over Qt's own layout.

#include "camera/NodeData.h"
#include "events/CameraManager.h"
#include "info/InfoWidget.h"
#include "mainwindow/ZerlaneViewer.h"
#include "support/ProgramBench.h"

#include "Zerlane/Zerlane.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFormLayout>
#include <QLabel>
#include <QScrollArea>
#include <QThread>

#include <algorithm>
#include <vector>

namespace {

constexpr int Selections = 100;

// Milliseconds of `show` followed by the event processing that lays the new content out.
template <class Show>
double timed(Show show)
{
    QElapsedTimer clock;
    clock.start();
    show();
    QCoreApplication::processEvents();
    return double(clock.nsecsElapsed()) / 1e6;
}

int rowCount(QWidget* page)
{
    auto* form = qobject_cast<QFormLayout*>(page->layout());
    return form ? form->rowCount() : 0;
}

QWidget* plainForm(int rows)
{
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    for (int i = 0; i < rows; ++i)
        form->addRow(QString("row %1 :").arg(i), new QLabel(QString("value %1").arg(i)));
    return page;
}

void BM_ShowDepthNodePage(benchmark::State& state)
{
    ZerlaneViewer* window = ZerlaneViewer::instance();
    auto* info = window->findChild<InfoWidget*>("widgetInfo");
    NodeData* depth = ProgramBench::depthNode();
    if (!depth) {
        state.SkipWithError("no depth node");
        return;
    }
    info->showNode(depth);
    const int rows = rowCount(info->content());
    QScrollArea baselineArea;
    baselineArea.setWidgetResizable(true);
    baselineArea.resize(info->size());
    baselineArea.show();

    std::vector<double> page;
    std::vector<double> baseline;
    for (auto _ : state) {
        for (int i = 0; i < Selections; ++i) {
            page.push_back(timed([&] { info->showNode(depth); }));
            baseline.push_back(timed([&] { baselineArea.setWidget(plainForm(rows)); }));
        }
    }
    state.counters["rows"] = rows;
    state.counters["page_median_ms"] = ProgramBench::median(page);
    state.counters["baseline_median_ms"] = ProgramBench::median(baseline);
    state.counters["ratio"] = ProgramBench::median(page) / ProgramBench::median(baseline);
}

BENCHMARK(BM_ShowDepthNodePage)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return ProgramBench::runInProgram(argc, argv);
}
