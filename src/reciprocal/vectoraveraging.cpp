#include "reciprocal/vectoraveraging.h"

#include "reciprocal/bydstar.h"
#include "reciprocal/vectorgrid.h"
#include "records/progress.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace tessera {

namespace {

// The sums are in single precision, so their value depends on the order of the summands. The plain way walks
// all pairs (i, j > i) within the window on lengths, which gives to each vector k the values of its
// neighbours in ascending order, whichever side of k they lie on. The grid finds the same neighbours; they
// are sorted and added in that order, eight vectors k side by side.
constexpr int g_nLanes = 8;
typedef float FloatLanes __attribute__((vector_size(4 * g_nLanes)));
typedef int32_t IntLanes __attribute__((vector_size(4 * g_nLanes)));
typedef double DoubleLanes __attribute__((vector_size(8 * g_nLanes)));

/// The window on lengths: of a list sorted by d*, the places whose d* differs by less than half the
/// tolerance from that of a place.
struct Window {
    std::vector<int> vecBegin;
    std::vector<int> vecEnd;
};

Window windowOnLengths(const std::vector<double>& vecDStar, double dfHalf)
{
    const int nCount = int(vecDStar.size());
    Window window;
    window.vecBegin.resize(size_t(nCount));
    window.vecEnd.resize(size_t(nCount));
    int nBegin = 0;
    int nEnd = 0;
    for (int n = 0; n < nCount; ++n) {
        const double dfDStar = vecDStar[size_t(n)];
        if (!std::isfinite(dfDStar)) {
            window.vecBegin[size_t(n)] = n;
            window.vecEnd[size_t(n)] = n + 1;
            continue;
        }
        while (nBegin < n && !(dfDStar - vecDStar[size_t(nBegin)] < dfHalf))
            ++nBegin;
        nEnd = std::max(nEnd, n + 1);
        while (nEnd < nCount && vecDStar[size_t(nEnd)] - dfDStar < dfHalf)
            ++nEnd;
        window.vecBegin[size_t(n)] = nBegin;
        window.vecEnd[size_t(n)] = nEnd;
    }
    return window;
}

/// What a vector adds to a neighbour.
struct Contribution {
    float fX, fY, fZ;     ///< the vector itself
    float fSX, fSY, fSZ;  ///< weight times the vector
    double dfWeight;
    int nIndex;  ///< place in the list sorted by d*
};

/// Position sums and weight of one vector.
struct PileSum {
    float fSX, fSY, fSZ;
    float fWeight;
};

/// The sums of up to eight vectors: `pOwn[nLane]` starts each, and the candidates, ascending by index, are
/// added where they lie within the tolerance and the lane's window.
///
/// A lane that a candidate does not concern adds −0, which changes no number, so that no lane branches.
/// bFloatWeights: all weights are single-precision numbers, and then the sum in double, rounded, is the sum
/// in single precision (rounding twice is innocent with more than twice the digits).
template <bool bFloatWeights>
__attribute__((always_inline)) inline void addLanes(const Contribution* const* pOwn, int nLanes,
                                                    const Contribution* pCandidate,
                                                    const Contribution* pCandidateEnd, float fSquareLimit,
                                                    const Window& window, PileSum* pSum)
{
    FloatLanes laneX = {}, laneY = {}, laneZ = {}, laneSX = {}, laneSY = {}, laneSZ = {}, laneW = {};
    IntLanes laneBegin = {}, laneEnd = {};
    for (int n = 0; n < nLanes; ++n) {
        laneX[n] = pOwn[n]->fX;
        laneY[n] = pOwn[n]->fY;
        laneZ[n] = pOwn[n]->fZ;
        laneSX[n] = pOwn[n]->fSX;
        laneSY[n] = pOwn[n]->fSY;
        laneSZ[n] = pOwn[n]->fSZ;
        laneW[n] = float(pOwn[n]->dfWeight);
        laneBegin[n] = window.vecBegin[size_t(pOwn[n]->nIndex)];
        laneEnd[n] = window.vecEnd[size_t(pOwn[n]->nIndex)];
    }
    const IntLanes laneMinusZero = IntLanes{} + std::numeric_limits<int32_t>::min();
    int nNextOwn = 0;
    for (; pCandidate != pCandidateEnd; ++pCandidate) {
        const Contribution& other = *pCandidate;
        const FloatLanes laneDX = other.fX - laneX;
        const FloatLanes laneDY = other.fY - laneY;
        const FloatLanes laneDZ = other.fZ - laneZ;
        const FloatLanes laneSquare = laneDX * laneDX + laneDY * laneDY + laneDZ * laneDZ;
        IntLanes laneNear = (laneSquare <= fSquareLimit) & (laneBegin <= other.nIndex) &
                            (laneEnd > other.nIndex);
        if (nNextOwn < nLanes && pOwn[nNextOwn]->nIndex == other.nIndex)
            laneNear[nNextOwn++] = 0;  // a vector is no neighbour of itself
        const IntLanes laneFar = ~laneNear & laneMinusZero;
        laneSX += (FloatLanes)(((IntLanes)(FloatLanes{} + other.fSX) & laneNear) | laneFar);
        laneSY += (FloatLanes)(((IntLanes)(FloatLanes{} + other.fSY) & laneNear) | laneFar);
        laneSZ += (FloatLanes)(((IntLanes)(FloatLanes{} + other.fSZ) & laneNear) | laneFar);
        if (bFloatWeights) {
            const float fWeight = float(other.dfWeight);
            laneW += (FloatLanes)(((IntLanes)(FloatLanes{} + fWeight) & laneNear) | laneFar);
        } else {
            const DoubleLanes laneSum = __builtin_convertvector(laneW, DoubleLanes) + other.dfWeight;
            const FloatLanes laneNewW = __builtin_convertvector(laneSum, FloatLanes);
            laneW = (FloatLanes)(((IntLanes)laneNewW & laneNear) | ((IntLanes)laneW & ~laneNear));
        }
    }
    for (int n = 0; n < nLanes; ++n)
        pSum[n] = {laneSX[n], laneSY[n], laneSZ[n], laneW[n]};
}

using AddLanes = void (*)(const Contribution* const*, int, const Contribution*, const Contribution*, float,
                          const Window&, PileSum*);

template <bool bFloatWeights>
void addLanesPlain(const Contribution* const* pOwn, int nLanes, const Contribution* pBegin,
                   const Contribution* pEnd, float fSquareLimit, const Window& window, PileSum* pSum)
{
    addLanes<bFloatWeights>(pOwn, nLanes, pBegin, pEnd, fSquareLimit, window, pSum);
}

#if defined(__x86_64__)
// The same operations with wider registers; no fused multiply-add, so the numbers are the same.
template <bool bFloatWeights>
__attribute__((target("avx2"))) void addLanesWide(const Contribution* const* pOwn, int nLanes,
                                                  const Contribution* pBegin, const Contribution* pEnd,
                                                  float fSquareLimit, const Window& window, PileSum* pSum)
{
    addLanes<bFloatWeights>(pOwn, nLanes, pBegin, pEnd, fSquareLimit, window, pSum);
}
#endif

template <bool bFloatWeights>
AddLanes chosenAddLanes()
{
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2"))
        return addLanesWide<bFloatWeights>;
#endif
    return addLanesPlain<bFloatWeights>;
}

/// The side of the search cubes, a little wider than the tolerance, as squares are rounded.
double cubeSide(float fTolerance)
{
    return std::max(double(fTolerance) * 1.001, 1e-18);
}

/// Sums over the neighbours of each vector of a list sorted by d*. Returns false when the run was stopped.
bool sumPiles(const std::vector<Contribution>& vecOwn, const std::vector<double>& vecDStar, float fTolerance,
              std::vector<PileSum>& vecSum, CRunReport& report)
{
    const int nCount = int(vecOwn.size());
    std::vector<Vec3D> vecPoint;
    vecPoint.reserve(vecOwn.size());
    bool bFloatWeights = true;
    vecSum.resize(vecOwn.size());
    for (const Contribution& own : vecOwn) {
        vecPoint.push_back({own.fX, own.fY, own.fZ});
        bFloatWeights = bFloatWeights && double(float(own.dfWeight)) == own.dfWeight;
        vecSum[size_t(own.nIndex)] = {own.fSX, own.fSY, own.fSZ, float(own.dfWeight)};
    }
    const AddLanes pAddLanes = bFloatWeights ? chosenAddLanes<true>() : chosenAddLanes<false>();
    const Window window = windowOnLengths(vecDStar, double(fTolerance) * 0.5);
    const float fSquareLimit = fTolerance * fTolerance;
    const CVectorGrid grid(vecPoint, cubeSide(fTolerance));

    std::vector<int> vecCell;
    std::vector<int> vecIndex;
    std::vector<Contribution> vecCandidate;
    int nDone = 0;
    for (int nCell = 0; nCell < grid.cellCount(); ++nCell) {
        grid.neighbours(nCell, vecCell);
        vecIndex.clear();
        for (int nNeighbour : vecCell) {
            const CVectorGrid::Range range = grid.cell(nNeighbour);
            vecIndex.insert(vecIndex.end(), grid.order().begin() + range.nBegin,
                            grid.order().begin() + range.nEnd);
        }
        std::sort(vecIndex.begin(), vecIndex.end());
        vecCandidate.clear();
        for (int nIndex : vecIndex)
            vecCandidate.push_back(vecOwn[size_t(nIndex)]);

        const CVectorGrid::Range own = grid.cell(nCell);
        for (int nFirst = own.nBegin; nFirst < own.nEnd; nFirst += g_nLanes) {
            const int nLanes = std::min(g_nLanes, own.nEnd - nFirst);
            const Contribution* apOwn[g_nLanes] = {};
            for (int n = 0; n < nLanes; ++n)
                apOwn[n] = &vecOwn[size_t(grid.order()[size_t(nFirst) + size_t(n)])];
            // Ascending indices: the first lane's window begins first and the last lane's ends last.
            const int nBegin = window.vecBegin[size_t(apOwn[0]->nIndex)];
            const int nEnd = window.vecEnd[size_t(apOwn[nLanes - 1]->nIndex)];
            const auto itBegin = std::lower_bound(vecIndex.begin(), vecIndex.end(), nBegin);
            const auto itEnd = std::lower_bound(itBegin, vecIndex.end(), nEnd);
            PileSum aSum[g_nLanes];
            pAddLanes(apOwn, nLanes, vecCandidate.data() + (itBegin - vecIndex.begin()),
                      vecCandidate.data() + (itEnd - vecIndex.begin()), fSquareLimit, window, aSum);
            for (int n = 0; n < nLanes; ++n)
                vecSum[size_t(apOwn[n]->nIndex)] = aSum[n];
            if (nDone / 1000 != (nDone + nLanes) / 1000 || nDone + nLanes == nCount) {
                report.setProgress((nDone + nLanes) / 1000);
                if (!report.goOn())
                    return false;
            }
            nDone += nLanes;
        }
    }
    return true;
}

/// Marks the lighter of two neighbours as gone, walking from the shortest pile outwards.
///
/// For each pile the cubes around it are walked in step, so that its neighbours behind it come in ascending
/// order as in the plain walk, until one of them is heavier.
std::vector<char> suppressNeighbours(const std::vector<Vec3D>& vecPoint, const std::vector<double>& vecDStar,
                                     const std::vector<double>& vecWeight, float fTolerance)
{
    const int nCount = int(vecPoint.size());
    const Window window = windowOnLengths(vecDStar, double(fTolerance) * 0.5);
    const float fSquareLimit = fTolerance * fTolerance;
    const CVectorGrid grid(vecPoint, cubeSide(fTolerance));
    std::vector<char> vecGone(vecPoint.size(), 0);
    // Where each cube's points behind the current pile and not gone begin; only moves forward.
    std::vector<int> vecHead;
    vecHead.reserve(size_t(grid.cellCount()));
    for (int nCell = 0; nCell < grid.cellCount(); ++nCell)
        vecHead.push_back(grid.cell(nCell).nBegin);

    std::vector<int> vecCell;
    struct Walk {
        int nPlace, nEnd, nIndex;
    };
    std::vector<Walk> vecWalk;
    int nNeighboursOf = -1;
    for (int nA = 0; nA < nCount; ++nA) {
        const int nCellA = grid.cellOfPoint(nA);
        if (vecGone[size_t(nA)] || nCellA < 0)
            continue;
        if (nNeighboursOf != nCellA)
            grid.neighbours(nCellA, vecCell);
        nNeighboursOf = nCellA;
        const int nWindowEnd = window.vecEnd[size_t(nA)];
        vecWalk.clear();
        const auto advance = [&](Walk& walk) {
            while (walk.nPlace < walk.nEnd && vecGone[size_t(grid.order()[size_t(walk.nPlace)])])
                ++walk.nPlace;
            walk.nIndex = walk.nPlace < walk.nEnd ? grid.order()[size_t(walk.nPlace)] : nCount;
        };
        for (int nCell : vecCell) {
            int& nHead = vecHead[size_t(nCell)];
            const int nEnd = grid.cell(nCell).nEnd;
            while (nHead < nEnd &&
                   (grid.order()[size_t(nHead)] <= nA || vecGone[size_t(grid.order()[size_t(nHead)])]))
                ++nHead;
            Walk walk = {nHead, nEnd, nCount};
            advance(walk);
            if (walk.nIndex < nWindowEnd)
                vecWalk.push_back(walk);
        }
        while (!vecWalk.empty()) {
            size_t nNext = 0;
            for (size_t n = 1; n < vecWalk.size(); ++n)
                if (vecWalk[n].nIndex < vecWalk[nNext].nIndex)
                    nNext = n;
            const int nB = vecWalk[nNext].nIndex;
            if (squaredLength(vecPoint[size_t(nA)] - vecPoint[size_t(nB)]) <= fSquareLimit) {
                if (vecWeight[size_t(nB)] > vecWeight[size_t(nA)]) {
                    vecGone[size_t(nA)] = 1;
                    break;
                }
                vecGone[size_t(nB)] = 1;
            }
            ++vecWalk[nNext].nPlace;
            advance(vecWalk[nNext]);
            if (vecWalk[nNext].nIndex >= nWindowEnd)
                vecWalk.erase(vecWalk.begin() + ptrdiff_t(nNext));
        }
    }
    return vecGone;
}

}  // namespace

QList<Peak3D> averageDifferenceVectors(const QList<Peak3D>& listVector, float fTolerance, CRunReport& report)
{
    QList<Peak3D> listSorted = listVector;
    sortByDStar(listSorted);
    const int nCount = listSorted.size();
    std::vector<Contribution> vecOwn;
    std::vector<double> vecDStar;
    vecOwn.reserve(size_t(nCount));
    vecDStar.reserve(size_t(nCount));
    for (int n = 0; n < nCount; ++n) {
        const Peak3D& vector = listSorted.at(n);
        const Vec3D vecWeighted = scaledDouble(vector.point(), vector.dfIPoint);
        vecOwn.push_back({vector.fX3D, vector.fY3D, vector.fZ3D, vecWeighted.x, vecWeighted.y, vecWeighted.z,
                          vector.dfIPoint, n});
        vecDStar.push_back(vector.dfDStar);
    }
    std::vector<PileSum> vecSum;
    CProgress progress(report, QStringLiteral("%p%"), 0, (nCount - 1) / 1000);
    const bool bSummed = sumPiles(vecOwn, vecDStar, fTolerance, vecSum, report);
    progress.end();
    if (!bSummed)
        return {};

    QList<Peak3D> listPile;
    listPile.reserve(nCount);
    for (int n = 0; n < nCount; ++n) {
        const PileSum& sum = vecSum[size_t(n)];
        const Vec3D vecMean = {sum.fSX / sum.fWeight, sum.fSY / sum.fWeight, sum.fSZ / sum.fWeight};
        Peak3D pile;
        pile.setPoint(vecMean);
        pile.dfIPoint = double(sum.fWeight);
        pile.dfDStar = double(length(vecMean));
        pile.nID = n;
        listPile.append(pile);
    }
    sortByDStar(listPile);

    std::vector<Vec3D> vecPoint;
    std::vector<double> vecWeight;
    vecDStar.clear();
    for (const Peak3D& pile : qAsConst(listPile)) {
        vecPoint.push_back(pile.point());
        vecWeight.push_back(pile.dfIPoint);
        vecDStar.push_back(pile.dfDStar);
    }
    const std::vector<char> vecGone = suppressNeighbours(vecPoint, vecDStar, vecWeight, fTolerance);
    float fMax = -std::numeric_limits<float>::infinity();
    bool bAny = false;
    for (int n = 0; n < nCount; ++n)
        if (!vecGone[size_t(n)] && float(vecWeight[size_t(n)]) > fMax) {
            fMax = float(vecWeight[size_t(n)]);
            bAny = true;
        }
    QList<Peak3D> listResult;
    for (int n = 0; n < nCount; ++n) {
        if (vecGone[size_t(n)])
            continue;
        if (bAny && fMax != 0 && float(vecWeight[size_t(n)]) < fMax / 10)
            continue;
        listResult.append(listPile.at(n));
    }
    return listResult;
}

}  // namespace tessera
