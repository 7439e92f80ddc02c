// Merging, cell search and indexing at the sizes of large data sets.
#include "crystal/peakpairs.h"
#include "reciprocal/cellfromdifferences.h"
#include "reciprocal/cellhunting.h"
#include "reciprocal/differencegroups.h"
#include "reciprocal/differencevectors.h"
#include "reciprocal/indexspreading.h"
#include "reciprocal/mapping.h"
#include "reciprocal/merging.h"
#include "reciprocal/predictedpositions.h"
#include "reciprocal/vectoraveraging.h"
#include "tests/reciprocal/plainloops.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace tessera {

namespace {

/// Reflections of a cell with edges in Å at right angles, d* up to a limit, in random order of intensity.
QList<Peak3D> lattice(float fA, float fB, float fC, float fMaxDStar, float fNoise, int nMost)
{
    std::mt19937 random(3);
    std::normal_distribution<float> noise(0, fNoise);
    QList<Peak3D> listPeak;
    const int nH = int(fMaxDStar * fA), nK = int(fMaxDStar * fB), nL = int(fMaxDStar * fC);
    for (int h = -nH; h <= nH; ++h) {
        for (int k = -nK; k <= nK; ++k) {
            for (int l = -nL; l <= nL; ++l) {
                Peak3D peak;
                peak.setPoint({float(h) / fA + noise(random), float(k) / fB + noise(random),
                               float(l) / fC + noise(random)});
                peak.dfDStar = double(length(peak.point()));
                if (peak.dfDStar > double(fMaxDStar) || (h == 0 && k == 0 && l == 0)) {
                    continue;
                }
                peak.dfIPoint = double(float(1 + random() % 100000));
                peak.nFrame = 1;
                peak.nID = listPeak.size();
                listPeak.append(peak);
            }
        }
    }
    std::shuffle(listPeak.begin(), listPeak.end(), random);
    return listPeak.mid(0, nMost);
}

void BM_Merging(benchmark::State& state)
{
    const int nFrames = 200;
    std::mt19937 random(1);
    DataSet data;
    data.m_dfCenterX = data.m_dfCenterY = 1024;
    for (int n = 0; n < nFrames; ++n) {
        data.m_listOverallTilt.append(-50 + 0.5 * n);
        data.m_listShift.append(QPointF());
        data.m_listPeakFrame.append(QList<Peak3D>());
        for (int i = 0; i < state.range(0) / nFrames; ++i) {
            Peak3D peak;
            peak.dfX2D = random() % 20480 * 0.1;
            peak.dfY2D = random() % 20480 * 0.1;
            peak.nFrame = n;
            peak.dfIPoint = peak.dfI2D = random() % 1000;
            data.m_listPeakFrame[n].append(peak);
        }
    }
    CRunReport report;
    MappingParameters mapping;
    mapping.m_dfResolutionMax = 100;
    transformPeaksTo3D(data, mapping, report);
    showPeaksIn3D(data, mapping);
    for (auto _ : state) {
        benchmark::DoNotOptimize(peakReduction3D(data, PeakMergingParameters(), nullptr, report));
    }
    state.counters["chains"] = data.m_listPeakChain.size();
}
BENCHMARK(BM_Merging)->Arg(20000)->Arg(200000)->Unit(benchmark::kMillisecond);

/// The full number of difference vectors; small cells make few and heavy piles, large ones many.
void BM_CellSearch(benchmark::State& state)
{
    const float fEdge = float(state.range(0));
    const QList<Peak3D> list = lattice(fEdge, fEdge * 1.1f, fEdge * 1.3f, 1.2f, 1e-3f, int(state.range(1)));
    CRunReport report;
    int nVectors = 0;
    for (auto _ : state) {
        DataSet data;
        runUnitCellHunting(data, list, CellHuntingParameters(), report);
        benchmark::DoNotOptimize(data);
    }
    nVectors = int(calDifferenceVectors(list, 1 / 3.f, 1 / 30.f, report).size());
    state.counters["vectors"] = nVectors;
    state.counters["reflections"] = list.size();
}
BENCHMARK(BM_CellSearch)
    ->Args({6, 20000})
    ->Args({8, 20000})
    ->Args({12, 20000})
    ->Args({20, 20000})
    ->Args({30, 2000})
    ->Unit(benchmark::kMillisecond);

enum Way { InLanes, PlainLoop };

/// Piles of a number of difference vectors, beside the plain loop over pairs of vectors.
void BM_Averaging(benchmark::State& state)
{
    const QList<Peak3D> list = lattice(12, 12 * 1.1f, 12 * 1.3f, 1.2f, 1e-3f, 20000);
    CRunReport report;
    std::vector<DifferenceVector> vecVector = calDifferenceVectors(list, 1 / 3.f, 1 / 30.f, report);
    vecVector.resize(std::min(vecVector.size(), size_t(state.range(0))));
    const QList<Peak3D> listVector = recordsOf(vecVector);
    for (auto _ : state) {
        if (state.range(1) == PlainLoop) {
            benchmark::DoNotOptimize(plainAveragedVectors(listVector, 0.01f));
        } else {
            benchmark::DoNotOptimize(averageDifferenceVectors(vecVector, 0.01f, report));
        }
    }
    state.counters["vectors"] = double(vecVector.size());
}
BENCHMARK(BM_Averaging)
    ->Args({300000, InLanes})
    ->Args({30000, InLanes})
    ->Args({30000, PlainLoop})
    ->Unit(benchmark::kMillisecond);

enum Points { OnTheLattice, WrongCell, NoLattice };

/// The edge in Å decides how far 20 000 reflections reach, and with it how many are neighbours. A cell of
/// wrong edges and points on no lattice leave most reflections to be tried again and again. The last number
/// of a row is the way.
void BM_Indexing(benchmark::State& state)
{
    const float fEdge = float(state.range(0));
    const float fWrong = state.range(1) == WrongCell ? 1.37f : 1.004f;
    QList<Peak3D> list = lattice(fEdge, fEdge * 1.1f, fEdge * 1.3f, 17.5f / fEdge, 2e-4f, 20000);
    if (state.range(1) == NoLattice) {
        std::mt19937 random(5);
        std::uniform_real_distribution<float> place(-17.5f / fEdge, 17.5f / fEdge);
        for (Peak3D& peak : list) {
            peak.setPoint({place(random), place(random), place(random)});
            peak.dfDStar = double(length(peak.point()));
        }
    }
    const ReciprocalBasis basis = {
        {fWrong / fEdge, 0, 0}, {0, 1 / fEdge / 1.1f, 0}, {0, 0, 1 / fEdge / 1.3f}};
    CRunReport report;
    for (auto _ : state) {
        QList<Peak3D> listIndexed = list;
        if (state.range(2) == PlainLoop) {
            plainIndexing(listIndexed, basis, 0.05f, 1.f / 3);
        } else {
            indexReflections(listIndexed, basis, 0.05f, 1.f / 3, report);
        }
        benchmark::DoNotOptimize(listIndexed);
    }
    state.counters["reflections"] = list.size();
}
BENCHMARK(BM_Indexing)
    ->ArgsProduct({{10, 17, 30, 60}, {OnTheLattice, WrongCell, NoLattice}, {InLanes}})
    ->Args({10, OnTheLattice, PlainLoop})
    ->Args({60, OnTheLattice, PlainLoop})
    ->Unit(benchmark::kMillisecond);

/// A series with a cubic cell in force, turned so that no axis lies in a plane of the frames.
DataSet seriesWithCell(float fEdge, int nFrames)
{
    DataSet data;
    data.m_dfPixelSize = 0.002;
    data.m_dfRotationAxis = 40;
    data.m_dfCenterX = data.m_dfCenterY = 1024;
    for (int n = 0; n < nFrames; ++n) {
        data.m_listOverallTilt.append(-50 + 0.5 * n);
        data.m_listShift.append(QPointF());
    }
    const CMatrix3 matrix = rotationX(31).multiplied(rotationZ(17)).multiplied(rotationX(11));
    data.m_listCell = {rotated(matrix, {1 / fEdge, 0, 0}), rotated(matrix, {0, 1 / fEdge, 0}),
                       rotated(matrix, {0, 0, 1 / fEdge})};
    return data;
}

/// Cell edge in Å; one frame, up to 1 Å⁻¹.
void BM_PredictedPositions(benchmark::State& state)
{
    const DataSet data = seriesWithCell(float(state.range(0)), 200);
    int nFound = 0;
    for (auto _ : state) {
        nFound = predictedPositions(data, 77, 1.0).size();
    }
    state.counters["reflections"] = nFound;
}
BENCHMARK(BM_PredictedPositions)->Arg(10)->Arg(60)->Arg(150)->Unit(benchmark::kMillisecond);

/// 200 frames of 150 indexed peaks: all pairs, the pairs in groups, and the whole refinement of the cell.
enum PairWork { MakePairs, GroupPairs, RefineCell };

void BM_PeakPairs(benchmark::State& state)
{
    DataSet data = seriesWithCell(30, 200);
    QVector<QList<Peak3D>> vecPeak;
    for (int n = 0; n < 200; ++n) {
        vecPeak.append(predictedPositions(data, n, 0.9).mid(0, 150));
        for (Peak3D& peak : vecPeak.last()) {
            peak.dfIPoint = 1000;
        }
    }
    RefinementParameters parameters;
    parameters.m_dfRefineDStarLow = 0;
    const PeakPairLimits limits = {0, 2, data.m_dfPixelSize};
    CRunReport report;
    const std::vector<PeakPairPlace> vecPair =
        peakPairPlaces(vecPeak, limits, data.m_spaceGroup, report).value_or(std::vector<PeakPairPlace>());
    std::vector<IndexKey> vecKey;
    for (const PeakPairPlace& pair : vecPair) {
        const Peak3D& a = vecPeak[pair.nList][pair.nFirst];
        const Peak3D& b = vecPeak[pair.nList][pair.nSecond];
        vecKey.push_back({int(a.dfH - b.dfH), int(a.dfK - b.dfK), int(a.dfL - b.dfL)});
    }
    for (auto _ : state) {
        switch (state.range(0)) {
            case MakePairs:
                benchmark::DoNotOptimize(peakPairPlaces(vecPeak, limits, data.m_spaceGroup, report));
                break;
            case GroupPairs:
                benchmark::DoNotOptimize(groupsOfDifferences(vecKey));
                break;
            default:
                benchmark::DoNotOptimize(refineCellFromDifferenceVectors(vecPeak, data, parameters, report));
        }
    }
    state.counters["pairs"] = double(vecPair.size());
    state.counters["groups"] = double(groupsOfDifferences(vecKey).size());
}
BENCHMARK(BM_PeakPairs)->Arg(MakePairs)->Arg(GroupPairs)->Arg(RefineCell)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tessera
