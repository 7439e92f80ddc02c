// The longest gap in which the window looks at no event, for each run and for what shows results: a click
// that comes in it is answered after it.
//
// TESSERA_BENCH_SERIES names the project of a series in place of one that is simulated. "cpu_ms" is the CPU
// time of the window's thread in the longest gap and "wall_ms" the time of the clock, which a busy machine
// makes longer; both are the least of the repeats, as what disturbs makes them only longer.
#include "bench/benchapplication.h"
#include "frames/seriespicture.h"
#include "simulate/truthfile.h"
#include "tests/window/loopwatch.h"
#include "window/crystal/geometrydialog.h"
#include "window/knowncelldialog.h"
#include "window/mainwindow.h"
#include "window/pages/cellpage.h"
#include "window/pages/integrationpage.h"
#include "window/pages/peaksearchpage.h"
#include "window/windowactions.h"

#include <benchmark/benchmark.h>

#include <QAction>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>

#include <cmath>

namespace tessera {

namespace {

// A series of natrolite in a folder; empty where it could not be written.
QString simulatedProject(const QString& strFolder)
{
    SimulationParameters p;
    p.nFrames = 80;
    p.nSize = 512;
    p.dfPixelSize = 0.004;
    p.dfTiltStart = -40;
    p.dfTiltStep = 1;
    p.strDirectory = strFolder;
    p.strName = QStringLiteral("series");
    QString strError;
    const std::optional<SimulatedSeries> series = simulateSeries(p, strError);
    return series && writeSeries(*series, strError) ? QDir(strFolder).filePath(QStringLiteral("series.ed3d"))
                                                    : QString();
}

// The project in a folder of its own, beside links to its frames: runs write into it.
QString linkedProject(const QString& strProject, const QString& strFolder)
{
    const QFileInfo project(strProject);
    for (const QFileInfo& file : project.dir().entryInfoList(QDir::Files)) {
        const QString strPlace = QDir(strFolder).filePath(file.fileName());
        const bool bDone = file.suffix() == QLatin1String("ed3d")
                               ? QFile::copy(file.filePath(), strPlace)
                               : QFile::link(file.absoluteFilePath(), strPlace);
        if (!bDone) {
            return {};
        }
    }
    return QDir(strFolder).filePath(project.fileName());
}

// A window with a series that was solved, which stays for all benchmarks.
struct Scene {
    Scene()
    {
        needApplication();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.filePath("settings"));
        const QString strGiven = qEnvironmentVariable("TESSERA_BENCH_SERIES");
        strProject = strGiven.isEmpty() ? simulatedProject(dir.path()) : linkedProject(strGiven, dir.path());
        pWindow = std::make_unique<MainWindow>();
        pWindow->resize(1280, 800);
        pWindow->show();
        QApplication::processEvents();
        pWatch = std::make_unique<CLoopWatch>();
    }
    template <typename T>
    T* child() const
    {
        return pWindow->findChild<T*>();
    }
    void open() const { pWindow->openFiles({strProject}); }
    void solve() const { child<WindowActions>()->m_pSolve->trigger(); }
    // As runs by hand find it.
    void openSolved()
    {
        if (!bSolved) {
            open();
            solve();
            bSolved = true;
        }
    }

    QTemporaryDir dir;
    QString strProject;
    std::unique_ptr<MainWindow> pWindow;
    std::unique_ptr<CLoopWatch> pWatch;
    bool bSolved = false;
};

Scene& scene()
{
    needApplication();
    static auto* const pScene = new Scene;  // windows go down before the application, which stays
    return *pScene;
}

void evaluateShifts(Scene& scene)
{
    scene.child<QTabWidget>()->setCurrentIndex(0);
    scene.child<WindowActions>()->m_listSelection[2]->trigger();
    scene.pWindow->runShiftEvaluation();
}

void searchKnownCell(Scene& scene)
{
    QTimer::singleShot(0, [&scene] {
        auto* pDialog = qobject_cast<KnownCellDialog*>(QApplication::activeModalWidget());
        if (!pDialog) {
            qFatal("no dialog of the known cell");
        }
        for (int i = 0; i < 6; ++i) {
            pDialog->m_apSpin[i]->setValue(
                QLocale::system().toDouble(scene.child<CellPage>()->m_apEditCell[i]->text()));
        }
        pDialog->m_pButtonSearch->click();
        pDialog->reject();
    });
    scene.pWindow->searchKnownCell();
}

void longestGap(benchmark::State& state, void (*pRun)(Scene&))
{
    Scene& here = scene();
    if (here.strProject.isEmpty()) {
        state.SkipWithError("no room for the series");
        return;
    }
    here.openSolved();
    double dfCpu = HUGE_VAL, dfWall = HUGE_VAL;
    int nRounds = 0;
    for (auto _ : state) {
        QApplication::processEvents();
        here.pWatch->begin();
        pRun(here);
        here.pWatch->round();
        QApplication::processEvents();  // the pictures that wait
        here.pWatch->round();
        dfCpu = std::min(dfCpu, here.pWatch->longestCpu());
        dfWall = std::min(dfWall, here.pWatch->longestWall());
        nRounds = here.pWatch->rounds();
    }
    state.counters["cpu_ms"] = dfCpu;
    state.counters["wall_ms"] = dfWall;
    state.counters["rounds"] = nRounds;
}

#define GAP(name, run) BENCHMARK_CAPTURE(longestGap, name, run)->Unit(benchmark::kMillisecond)->UseRealTime()

GAP(open, [](Scene& scene) { scene.open(); })->Iterations(5);
GAP(solve, [](Scene& scene) { scene.solve(); })->Iterations(2);
GAP(shifts, evaluateShifts)->Iterations(3);
GAP(hunting, [](Scene& scene) { scene.child<PeakSearchPage>()->m_pRunButton->click(); })->Iterations(3);
GAP(mapping, [](Scene& scene) { scene.pWindow->recalculate3DPeakPositionsAndUpdateView(); })->Iterations(5);
GAP(merging, [](Scene& scene) { scene.pWindow->peakReduction3D(); })->Iterations(5);
GAP(cell, [](Scene& scene) { scene.pWindow->runUnitCellHunting(); })->Iterations(3);
GAP(knowncell, searchKnownCell)->Iterations(3);
GAP(indexing, [](Scene& scene) { scene.pWindow->runIndexing(); })->Iterations(3);
GAP(lattices, [](Scene& scene) { scene.pWindow->runLatticeAnalysis(); })->Iterations(2);
GAP(geometry, [](Scene& scene) { scene.child<GeometryDialog>()->m_pButtonRun->click(); })->Iterations(2);
GAP(geometrytaken, [](Scene& scene) {
    scene.child<GeometryDialog>()->m_pButtonApply->click();
})->Iterations(1);
GAP(integration, [](Scene& scene) {
    scene.child<IntegrationPage>()->m_pButtonIntegrate->click();
})->Iterations(2);
GAP(picture, [](Scene& scene) { scene.pWindow->showSeriesPicture(SeriesPictureKind::Sum); })->Iterations(3);

}  // namespace

}  // namespace tessera
