#include "reciprocal/vectoraveraging.h"

#include "reciprocal/lengthwindow.h"
#include "reciprocal/sortedplaces.h"
#include "reciprocal/vectorgrid.h"
#include "reciprocal/vectorpiles.h"
#include "records/progress.h"

#include <cstdint>
#include <limits>
#include <utility>

namespace tessera {

namespace {

/// The mean of a vector and its neighbours.
struct VectorPile {
    Vec3D v;
    double dfDStar = 0;
    double dfWeight = 0;
    int nIndex = 0;  ///< of the vector, in the list sorted by d*
};

/// Marks the lighter of two neighbours as gone, walking from the shortest pile outwards.
///
/// For each pile the cubes around it are walked in step, so that its neighbours behind it come in ascending
/// order as in the plain walk, until one of them is heavier.
std::vector<char> suppressNeighbours(const std::vector<VectorPile>& vecPile, float fTolerance)
{
    const int nCount = int(vecPile.size());
    std::vector<Vec3D> vecPoint;
    std::vector<double> vecDStar;
    vecPoint.reserve(vecPile.size());
    vecDStar.reserve(vecPile.size());
    for (const VectorPile& pile : vecPile) {
        vecPoint.push_back(pile.v);
        vecDStar.push_back(pile.dfDStar);
    }
    const LengthWindow window = windowOnLengths(vecDStar, double(fTolerance) * 0.5);
    const float fSquareLimit = fTolerance * fTolerance;
    const CVectorGrid grid(vecPoint, cubeSide(fTolerance));
    std::vector<char> vecGone(vecPoint.size(), 0);
    // Where each cube's points behind the current pile and not gone begin; only moves forward.
    std::vector<int> vecHead;
    vecHead.reserve(size_t(grid.cellCount()));
    for (int nCell = 0; nCell < grid.cellCount(); ++nCell) {
        vecHead.push_back(grid.cell(nCell).nBegin);
    }

    std::vector<CVectorGrid::Range> vecRange;
    struct Walk {
        int nPlace, nEnd, nIndex;
    };
    std::vector<Walk> vecWalk;
    int nNeighboursOf = -1;
    for (int nA = 0; nA < nCount; ++nA) {
        const int nCellA = grid.cellOfPoint(nA);
        if (vecGone[nA] || nCellA < 0) {
            continue;
        }
        if (nNeighboursOf != nCellA) {
            grid.neighbours(nCellA, vecRange);
        }
        nNeighboursOf = nCellA;
        const int nWindowEnd = window.vecEnd[nA];
        vecWalk.clear();
        const auto advance = [&](Walk& walk) {
            while (walk.nPlace < walk.nEnd && vecGone[size_t(grid.order()[walk.nPlace])]) {
                ++walk.nPlace;
            }
            walk.nIndex = walk.nPlace < walk.nEnd ? grid.order()[walk.nPlace] : nCount;
        };
        for (const CVectorGrid::Range& range : vecRange) {
            for (int nCell = range.nBegin; nCell < range.nEnd; ++nCell) {
                int& nHead = vecHead[nCell];
                const int nEnd = grid.cell(nCell).nEnd;
                while (nHead < nEnd && (grid.order()[nHead] <= nA || vecGone[size_t(grid.order()[nHead])])) {
                    ++nHead;
                }
                Walk walk = {nHead, nEnd, nCount};
                advance(walk);
                if (walk.nIndex < nWindowEnd) {
                    vecWalk.push_back(walk);
                }
            }
        }
        while (!vecWalk.empty()) {
            size_t nNext = 0;
            for (size_t n = 1; n < vecWalk.size(); ++n) {
                if (vecWalk[n].nIndex < vecWalk[nNext].nIndex) {
                    nNext = n;
                }
            }
            const int nB = vecWalk[nNext].nIndex;
            if (squaredLength(vecPoint[nA] - vecPoint[nB]) <= fSquareLimit) {
                if (vecPile[nB].dfWeight > vecPile[nA].dfWeight) {
                    vecGone[nA] = 1;
                    break;
                }
                vecGone[nB] = 1;
            }
            ++vecWalk[nNext].nPlace;
            advance(vecWalk[nNext]);
            if (vecWalk[nNext].nIndex >= nWindowEnd) {
                vecWalk.erase(vecWalk.begin() + ptrdiff_t(nNext));
            }
        }
    }
    return vecGone;
}

std::vector<VectorPile> pilesByDStar(const std::vector<PileSum>& vecSum)
{
    std::vector<VectorPile> vecPile;
    std::vector<uint64_t> vecKey;
    vecPile.reserve(vecSum.size());
    vecKey.reserve(vecSum.size());
    for (size_t n = 0; n < vecSum.size(); ++n) {
        const PileSum& sum = vecSum[n];
        const Vec3D vecMean = {sum.fSX / sum.fWeight, sum.fSY / sum.fWeight, sum.fSZ / sum.fWeight};
        vecPile.push_back({vecMean, double(length(vecMean)), double(sum.fWeight), int(n)});
        vecKey.push_back(ascendingKey(vecPile.back().dfDStar));
    }
    std::vector<VectorPile> vecSorted;
    vecSorted.reserve(vecPile.size());
    for (const int nPlace : sortedPlaces(std::move(vecKey))) {
        vecSorted.push_back(vecPile[nPlace]);
    }
    return vecSorted;
}

std::vector<DifferenceVector> sortedByDStar(const std::vector<DifferenceVector>& vecVector)
{
    std::vector<uint64_t> vecKey;
    vecKey.reserve(vecVector.size());
    for (const DifferenceVector& vector : vecVector) {
        vecKey.push_back(ascendingKey(vector.dfDStar));
    }
    std::vector<DifferenceVector> vecSorted;
    vecSorted.reserve(vecVector.size());
    for (const int nPlace : sortedPlaces(std::move(vecKey))) {
        vecSorted.push_back(vecVector[nPlace]);
    }
    return vecSorted;
}

}  // namespace

QList<Peak3D> averageDifferenceVectors(const std::vector<DifferenceVector>& vecVector, float fTolerance,
                                       CRunReport& report, int nJobs)
{
    const int nCount = int(vecVector.size());
    std::vector<PileSum> vecSum;
    CProgress progress(report, QStringLiteral("%p%"), 0, (nCount - 1) / 1000);
    const bool bSummed = sumPiles(sortedByDStar(vecVector), fTolerance, nJobs, vecSum, report);
    progress.end();
    if (!bSummed) {
        return {};
    }
    const std::vector<VectorPile> vecPile = pilesByDStar(vecSum);
    const std::vector<char> vecGone = suppressNeighbours(vecPile, fTolerance);
    float fMax = -std::numeric_limits<float>::infinity();
    bool bAny = false;
    for (size_t n = 0; n < vecPile.size(); ++n) {
        if (!vecGone[n] && float(vecPile[n].dfWeight) > fMax) {
            fMax = float(vecPile[n].dfWeight);
            bAny = true;
        }
    }
    QList<Peak3D> listResult;
    for (size_t n = 0; n < vecPile.size(); ++n) {
        if (vecGone[n]) {
            continue;
        }
        if (bAny && fMax != 0 && float(vecPile[n].dfWeight) < fMax / 10) {
            continue;
        }
        Peak3D pile;
        pile.setPoint(vecPile[n].v);
        pile.dfIPoint = vecPile[n].dfWeight;
        pile.dfDStar = vecPile[n].dfDStar;
        pile.nID = vecPile[n].nIndex;
        listResult.append(pile);
    }
    return listResult;
}

}  // namespace tessera
