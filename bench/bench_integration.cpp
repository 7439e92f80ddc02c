// Prediction and integration: reflections a second, and what they add to the whole road of a series.
#include "integration/geometryforintegration.h"
#include "integration/prediction.h"
#include "integration/seriesintegration.h"
#include "road/road.h"
#include "simulate/truthfile.h"

#include <benchmark/benchmark.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <ctime>

namespace tessera {

namespace {

constexpr int g_nFrames = 400;
constexpr int g_nSide = 1024;
constexpr double g_dfPixelSize = 0.002;  // Å⁻¹ per pixel: the frames reach 1.02 Å⁻¹

// A series of natrolite on disk; 800 MB. Made anew, unless the environment variable TESSERA_BENCH_SERIES
// names the project of one. Empty where it could not be written.
QString projectOfSeries()
{
    const QString strGiven = qEnvironmentVariable("TESSERA_BENCH_SERIES");
    if (!strGiven.isEmpty()) {
        return strGiven;
    }
    static QTemporaryDir dir;
    static const QString strProject = [] {
        SimulationParameters p;
        p.nFrames = g_nFrames;
        p.nSize = g_nSide;
        p.dfPixelSize = g_dfPixelSize;
        p.dfTiltStart = -50;
        p.dfTiltStep = 0.25;
        p.dfBackground = 2;  // quick to make: each pixel is a throw of the dice for each count
        p.dfReadNoise = 0.5;
        p.dfCenterX = g_nSide / 2.0 + 3.4;
        p.dfCenterY = g_nSide / 2.0 - 3.7;
        p.strDirectory = dir.path();
        p.strName = QStringLiteral("series");
        QString strError;
        const std::optional<SimulatedSeries> series = simulateSeries(p, strError);
        return series && writeSeries(*series, strError) ? dir.filePath(QStringLiteral("series.ed3d"))
                                                        : QString();
    }();
    return strProject;
}

// The road to its refined geometry. None where it did not get there.
std::optional<SeriesGeometry> roadToGeometry(int nJobs, DataSet& dataSet)
{
    const QTemporaryDir dirOut;
    RoadOptions options;
    options.listInput = QStringList{projectOfSeries()};
    options.strOutDir = dirOut.path();
    options.nJobs = nJobs;
    CRunReport report;
    RoadState state(options, dataSet, report);
    runRoad(state);
    if (!state.results.end.finished()) {
        return std::nullopt;
    }
    return seriesGeometry(dataSet, state.mapping,
                          state.results.geometry ? &*state.results.geometry : nullptr);
}

// Most that the program ever had in memory, MB.
double peakMemory()
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("VmHWM:")) {
            return line.simplified().split(' ').value(1).toDouble() / 1024;
        }
    }
    return 0;
}

// A cubic cell of an edge in Å, turned out of all symmetry.
SeriesGeometry seriesOfCell(double dfEdge)
{
    SeriesGeometry series;
    const Matrix3 mat = orientationFromUniform(0.3, 0.6, 0.1);
    for (size_t i = 0; i < 3; ++i) {
        for (size_t j = 0; j < 3; ++j) {
            series.geometry.aBasis[i][j] = mat[i][j] / dfEdge;
        }
    }
    series.geometry.dfWavelength = 0.0251;
    series.geometry.dfPixelSize = g_dfPixelSize;
    series.sizeFrame = QSize(g_nSide, g_nSide);
    for (int n = 0; n < g_nFrames; ++n) {
        series.listTilt.push_back(-50 + 0.25 * n);
        series.listBeam.push_back({g_nSide / 2.0, g_nSide / 2.0});
    }
    return series;
}

void predictionOfSeries(benchmark::State& state)
{
    const SeriesGeometry series = seriesOfCell(double(state.range(0)));
    PredictionOptions options;
    options.dfMaxDStar = 1;
    size_t nPredicted = 0;
    for (auto _ : state) {
        nPredicted = predictObservations(series, options).size();
    }
    state.SetItemsProcessed(std::int64_t(state.iterations()) * std::int64_t(nPredicted));
    state.counters["reflections"] = double(nPredicted);
}
BENCHMARK(predictionOfSeries)->Arg(10)->Arg(30)->Arg(60)->Unit(benchmark::kMillisecond);

// CPU seconds of the process: on a busy machine they tell more than those of the clock.
double cpuSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}

// The road with integration against itself without it, in one run. The ratio is of CPU times.
void roadWithIntegration(benchmark::State& state)
{
    if (projectOfSeries().isEmpty()) {
        state.SkipWithError("no room for the series");
        return;
    }
    const int nJobs = int(state.range(0));
    double dfRoad = 0, dfIntegration = 0, dfClockRoad = 0, dfClockIntegration = 0;
    size_t nPredicted = 0;
    for (auto _ : state) {
        DataSet dataSet;
        CRunReport report;
        QElapsedTimer timer;
        timer.start();
        const double dfStart = cpuSeconds();
        const std::optional<SeriesGeometry> series = roadToGeometry(nJobs, dataSet);
        const double dfMiddle = cpuSeconds();
        dfRoad += dfMiddle - dfStart;
        dfClockRoad += double(timer.nsecsElapsed()) / 1e9;
        if (!series) {
            state.SkipWithError("no geometry");
            return;
        }
        timer.restart();
        const auto integrated = integrateSeries(dataSet, *series, IntegrationOptions(), nJobs, report);
        if (!integrated.finished()) {
            state.SkipWithError(qPrintable(report.reason()));
            return;
        }
        dfIntegration += cpuSeconds() - dfMiddle;
        dfClockIntegration += double(timer.nsecsElapsed()) / 1e9;
        nPredicted += integrated.made->listObservation.size();
    }
    const double dfTimes = double(state.iterations());
    state.counters["road_cpu_s"] = dfRoad / dfTimes;
    state.counters["integration_cpu_s"] = dfIntegration / dfTimes;
    state.counters["clock_ratio"] = (dfClockRoad + dfClockIntegration) / dfClockRoad;
    state.counters["ratio"] = (dfRoad + dfIntegration) / dfRoad;
    state.counters["reflections"] = double(nPredicted) / dfTimes;
    state.counters["reflections_per_s"] = double(nPredicted) / dfIntegration;
    state.counters["peak_MB"] = peakMemory();
}
BENCHMARK(roadWithIntegration)
    ->Arg(1)
    ->Arg(2)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime();

}  // namespace

}  // namespace tessera
