// The geometry of a series refined against many peaks, with every term that there is.
#include "refinement/geometryrefinement.h"
#include "tests/refinement/simulatedspots.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// A cubic crystal through an ellipse, the third order, a parabolic distortion and a beam that wanders.
SeriesTruth everythingTruth(std::mt19937& random)
{
    SeriesTruth truth;
    truth.matDirect = turnedCell(13, 13, 13, 90, 90, 90, random);
    truth.dfEllipse = 0.014;
    truth.dfEllipseAzimuth = 82;
    truth.dfRadial = 0.03;
    truth.dfSpiral = -0.004;
    truth.dfParabolic = 0.006;
    truth.dfParabolicAzimuth = -50;
    truth.dfOutOfPlane = 0.8;
    truth.dfTiltScale = 1.005;
    truth.nFrames = 121;
    truth.dfFirstTilt = -60;
    truth.dfFineNoise = 0.1;
    for (int n = 0; n < truth.nFrames; ++n) {
        truth.listDrift.push_back({std::sin(0.06 * n), n % 20 == 10 ? 2.0 : 0.0});
    }
    return truth;
}

/// The whole of it: rounds, choice of terms, drift, the fit of the free cell and that under a type.
void BM_GeometryOfAllTerms(benchmark::State& state)
{
    std::mt19937 random(4);
    const SeriesTruth truth = everythingTruth(random);
    std::vector<GeometrySpot> listSpot = simulatedSpots(truth, random);
    std::shuffle(listSpot.begin(), listSpot.end(), random);
    listSpot.resize(std::min(listSpot.size(), size_t(state.range(0))));
    const DiffractionGeometry start = startOf(truth, 0.002, random);
    GeometryRefinementOptions options;
    CellConstraint cubic;
    cubic.system = LatticeSystem::Cubic;
    options.listConstraint = {cubic};
    CRunReport report;
    size_t nFree = 0;
    int nFit = 0;
    for (auto _ : state) {
        const GeometryRefinement result = refineGeometry(listSpot, start, options, report);
        nFree = result.best().fit.listFree.size();
        nFit = result.nFitAfter;
    }
    state.counters["peaks"] = double(listSpot.size());
    state.counters["free"] = double(nFree);
    state.counters["fit"] = double(nFit);
}
BENCHMARK(BM_GeometryOfAllTerms)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tessera
