// The search for a lattice by directions, at the sizes of small, large and huge data sets.
#include "lattice/directionsearch.h"

#include <benchmark/benchmark.h>

#include <random>

namespace tessera {

namespace {

/// Peaks of a triclinic cell, as many as asked for: each a reflection out of all up to 0.8 Å⁻¹.
LatticePoints somePeaks(double dfEdge, int nPeaks)
{
    LatticeBasis basis;
    basis << 1, 0.1, 0, 0.05, 1.2, 0.1, 0, 0.2, 1.4;
    const Eigen::Matrix3d matReciprocal = (dfEdge * basis).inverse();
    std::mt19937 random(3);
    std::normal_distribution<double> error(0, 0.001);
    std::uniform_int_distribution<int> index(-int(1.4 * dfEdge * 0.8), int(1.4 * dfEdge * 0.8));
    LatticePoints listPoint;
    while (int(listPoint.size()) < nPeaks) {
        const Eigen::Vector3d q = matReciprocal *
                                  Eigen::Vector3d(index(random), index(random), index(random));
        if (q.norm() > 0 && q.norm() < 0.8) {
            listPoint.push_back(q + Eigen::Vector3d(error(random), error(random), error(random)));
        }
    }
    return listPoint;
}

/// Shortest edge in Å and number of peaks; the longest edge looked for is 2.5 times the shortest.
void BM_DirectionSearch(benchmark::State& state)
{
    const LatticePoints listPoint = somePeaks(double(state.range(0)), int(state.range(1)));
    DirectionSearchOptions options;
    options.dfLongest = 2.5 * double(state.range(0));
    int nFitting = 0;
    for (auto _ : state) {
        const std::optional<DirectionLattice> found = searchDirections(listPoint, options);
        nFitting = found ? found->nFitting : 0;
    }
    state.counters["share"] = double(nFitting) / double(listPoint.size());
}
BENCHMARK(BM_DirectionSearch)->ArgsProduct({{10, 40}, {5000, 50000, 500000}})->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tessera
