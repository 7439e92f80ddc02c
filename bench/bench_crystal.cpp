// Crystallography: closing of the space groups, the test of reflection conditions, expected reflections.
#include "crystal/expectedreflections.h"
#include "crystal/reflectionconditions.h"
#include "crystal/reflectionindices.h"
#include "crystal/spacegroupoperations.h"

#include <benchmark/benchmark.h>

namespace tessera {

namespace {

ReciprocalBasis benchCell()
{
    return {{0.04f, 0.f, 0.f}, {0.f, 0.0501f, 0.f}, {0.003f, 0.002f, 0.0402f}};
}

// About 20 000 reflections of a cell of 25 × 20 × 25 Å, every second one of those in reach.
QList<Peak3D> observedReflections(int nCount)
{
    CRunReport report;
    Peak3D peakLimit;
    peakLimit.dfDStar = 1.0;
    const QList<HKLRef> listAll = calAllReflections2({peakLimit}, benchCell(), {-70, 70}, report);
    QList<Peak3D> listPeak;
    for (int n = 0; n < listAll.size() && listPeak.size() < nCount; n += 2) {
        Peak3D peak;
        peak.setHKL(listAll[n].nH, listAll[n].nK, listAll[n].nL);
        peak.dfIPoint = 100 + n % 77;
        peak.dfDStar = 1.0;
        listPeak.append(peak);
    }
    return listPeak;
}

void BM_CrystalCloseAllSpaceGroups(benchmark::State& state)
{
    for (auto _ : state) {
        for (int n = 1; n <= 230; ++n) {
            benchmark::DoNotOptimize(operationsOfSpaceGroup(n));
        }
    }
}
BENCHMARK(BM_CrystalCloseAllSpaceGroups)->Unit(benchmark::kMillisecond);

void BM_CrystalTestReflectionConditions(benchmark::State& state)
{
    const QList<Peak3D> listPeak = observedReflections(5000);
    CRunReport report;
    CSpaceGroup spaceGroup;
    for (auto _ : state) {
        testReflectionConditions(listPeak, 0.05, spaceGroup, report);
    }
    state.counters["reflections"] = listPeak.size();
}
BENCHMARK(BM_CrystalTestReflectionConditions)->Unit(benchmark::kMillisecond);

void BM_CrystalExpectedReflections(benchmark::State& state)
{
    const QList<Peak3D> listPeak = observedReflections(20000);
    CRunReport report;
    for (auto _ : state) {
        benchmark::DoNotOptimize(calAllReflections2(listPeak, benchCell(), {-70, 70}, report));
    }
    state.counters["observed"] = listPeak.size();
}
BENCHMARK(BM_CrystalExpectedReflections)->Unit(benchmark::kMillisecond);

// Rivals: the missing list by the hashed set and by the linear search (0).
void BM_CrystalMissingReflections(benchmark::State& state)
{
    const QList<Peak3D> listPeak = observedReflections(20000);
    CRunReport report;
    const QList<HKLRef> listObserved = getRoundedHKLRef(listPeak);
    const QList<HKLRef> listAll = calAllReflections2(listPeak, benchCell(), {-70, 70}, report);
    for (auto _ : state) {
        QList<HKLRef> listMissing;
        if (state.range(0) == 1) {
            listMissing = missingReflections(listAll, listObserved);
        } else {
            for (const HKLRef& hkl : listAll) {
                if (!reflectionExistInList(hkl, listObserved)) {
                    listMissing.append(hkl);
                }
            }
        }
        benchmark::DoNotOptimize(listMissing);
    }
    state.counters["expected"] = listAll.size();
}
BENCHMARK(BM_CrystalMissingReflections)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tessera
