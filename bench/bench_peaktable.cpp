// Peak table of 20 000 reflections in the window: rebuilt by updatePeakTable(), sorted, filtered,
// copied and written.
#include "reciprocal/peaktable.h"
#include "window/mainwindow.h"
#include "window/reciprocal/peaktableview.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>

#include <memory>
#include <random>

namespace tessera {

namespace {

const int g_nRows = 20000;

/// The window with its table shown.
struct TableWindow {
    TableWindow()
    {
        if (!qApp) {
            if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
                qputenv("QT_QPA_PLATFORM", "offscreen");
            }
            static int nArgument = 1;
            static char aName[] = "tessera-bench";
            static char* aArgument[] = {aName, nullptr};
            new QApplication(nArgument,
                             aArgument);  // lives to the end: screens and fonts go with the process
        }
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.filePath("settings"));
        m_pWindow = std::make_unique<MainWindow>();
        m_pWindow->resize(1280, 800);
        m_pWindow->show();
        for (auto* pTab : m_pWindow->findChildren<QTabWidget*>()) {
            pTab->setCurrentIndex(3);
        }
        for (auto* pView : m_pWindow->findChildren<QTableView*>()) {
            if (pView->model()->columnCount() == g_nPeakTableColumns) {
                m_pView = pView;
            }
        }
        // A tenth is not indexed and shows "*".
        std::mt19937 random(1);
        std::uniform_real_distribution<double> place(0, 1);
        for (int i = 0; i < g_nRows; ++i) {
            Peak3D peak;
            peak.nID = i;
            peak.nFrame = i % 100;
            peak.dfX2D = 2000 * place(random);
            peak.dfY2D = 2000 * place(random);
            peak.dfIPoint = 1e5 * place(random);
            peak.dfDStar = place(random);
            peak.dfFrameFit = 100 * place(random);
            peak.setHKL(i % 41 - 20 + (i % 10 == 0 ? 0.4 : 0), i % 17 - 8, i % 13 - 6);
            m_listPeak.append(peak);
        }
        m_pWindow->updatePeakTable(m_listPeak);
    }
    void paint()
    {
        QCoreApplication::processEvents();
        m_pView->viewport()->repaint();
    }

    QTemporaryDir m_dir;
    std::unique_ptr<MainWindow> m_pWindow;
    QTableView* m_pView = nullptr;
    QList<Peak3D> m_listPeak;
};

void rebuildPeakTable(benchmark::State& state)
{
    TableWindow table;
    table.m_pView->sortByColumn(int(state.range(0)), Qt::AscendingOrder);
    for (auto _ : state) {
        table.m_pWindow->updatePeakTable(table.m_listPeak);
        table.paint();
    }
}
BENCHMARK(rebuildPeakTable)->Arg(0)->Arg(4)->Arg(7)->Unit(benchmark::kMillisecond)->UseRealTime();

void sortPeakTable(benchmark::State& state)
{
    TableWindow table;
    Qt::SortOrder nOrder = Qt::DescendingOrder;
    for (auto _ : state) {
        state.PauseTiming();
        table.m_pWindow->updatePeakTable(table.m_listPeak);  // forgets what the last sort parsed
        table.m_pView->sortByColumn(0, nOrder);
        state.ResumeTiming();
        table.m_pView->sortByColumn(int(state.range(0)), nOrder);
        table.paint();
    }
}
BENCHMARK(sortPeakTable)->Arg(4)->Arg(7)->Arg(9)->Unit(benchmark::kMillisecond)->UseRealTime();

void filterPeakTable(benchmark::State& state)
{
    // Half of the rows, sorted by intensity; what any spreadsheet-like condition on numbers costs.
    const char* aLine[] = {"h+k=2n", "I>50000, d<2.5, frame=12..60", "unindexed", "sigma>3"};
    TableWindow table;
    auto& view = dynamic_cast<PeakTableView&>(*table.m_pView);
    view.sortByColumn(7, Qt::AscendingOrder);
    for (auto _ : state) {
        view.setFilter(QLatin1String(aLine[state.range(0)]));
        table.paint();
        state.PauseTiming();
        view.setFilter({});
        table.paint();
        state.ResumeTiming();
    }
}
BENCHMARK(filterPeakTable)->DenseRange(0, 3)->Unit(benchmark::kMillisecond)->UseRealTime();

void saveCsvOfPeakTable(benchmark::State& state)
{
    TableWindow table;
    for (auto _ : state) {
        benchmark::DoNotOptimize(dynamic_cast<PeakTableView&>(*table.m_pView).csv());
    }
}
BENCHMARK(saveCsvOfPeakTable)->Unit(benchmark::kMillisecond)->UseRealTime();

void copyPeakTable(benchmark::State& state)
{
    TableWindow table;
    for (auto _ : state) {
        table.m_pWindow->copyAllReflectionsInPeakTable();
    }
}
BENCHMARK(copyPeakTable)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

}  // namespace tessera
