#include "reciprocal/vectoraveraging.h"

#include "reciprocal/lengthwindow.h"
#include "reciprocal/sortedplaces.h"
#include "reciprocal/vectorgrid.h"
#include "reciprocal/vectorpiles.h"
#include "records/progress.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
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

/// Finds the neighbours of one pile after the other.
class CPileNeighbours {
public:
    /// @param vecPile  ascending by d*. Neighbours are piles whose distance is at most the tolerance (Å⁻¹),
    /// and whose d* is larger by less than half of it.
    CPileNeighbours(const std::vector<VectorPile>& vecPile, float fTolerance)
        : m_vecPile(vecPile),
          m_fSquareLimit(fTolerance * fTolerance),
          m_window(windowOnLengths(lengthsOf(vecPile), double(fTolerance) * 0.5)),
          m_grid(pointsOf(vecPile), cubeSide(fTolerance))
    {}

    /// The neighbours of a pile behind it in the list and not gone, ascending; none for a pile that is not
    /// finite.
    std::vector<int> behind(int nPile, const std::vector<char>& vecGone)
    {
        const int nCube = m_grid.cellOfPoint(nPile);
        if (nCube < 0) {
            return {};
        }
        if (nCube != m_nCubeOfRanges) {
            m_grid.neighbours(nCube, m_vecRange);
            m_nCubeOfRanges = nCube;
        }
        std::vector<int> vecNeighbour;
        for (const CVectorGrid::Range& range : m_vecRange) {
            for (int nCell = range.nBegin; nCell < range.nEnd; ++nCell) {
                addFromCube(nPile, nCell, vecGone, vecNeighbour);
            }
        }
        return vecNeighbour;
    }

private:
    static std::vector<double> lengthsOf(const std::vector<VectorPile>& vecPile)
    {
        std::vector<double> vecDStar;
        vecDStar.reserve(vecPile.size());
        for (const VectorPile& pile : vecPile) {
            vecDStar.push_back(pile.dfDStar);
        }
        return vecDStar;
    }

    static std::vector<Vec3D> pointsOf(const std::vector<VectorPile>& vecPile)
    {
        std::vector<Vec3D> vecPoint;
        vecPoint.reserve(vecPile.size());
        for (const VectorPile& pile : vecPile) {
            vecPoint.push_back(pile.v);
        }
        return vecPoint;
    }

    /// The points of a cube ascend, so those behind a pile follow each other.
    void addFromCube(int nPile, int nCube, const std::vector<char>& vecGone,
                     std::vector<int>& vecNeighbour) const
    {
        const CVectorGrid::Range cube = m_grid.cell(nCube);
        const auto itEnd = m_grid.order().begin() + cube.nEnd;
        const int nWindowEnd = m_window.vecEnd[nPile];
        const Vec3D vecPoint = m_vecPile[nPile].v;
        for (auto it = std::upper_bound(m_grid.order().begin() + cube.nBegin, itEnd, nPile);
             it != itEnd && *it < nWindowEnd; ++it) {
            if (!vecGone[*it] && squaredLength(vecPoint - m_vecPile[*it].v) <= m_fSquareLimit) {
                vecNeighbour.push_back(*it);
            }
        }
    }

    const std::vector<VectorPile>& m_vecPile;
    const float m_fSquareLimit;
    const LengthWindow m_window;
    const CVectorGrid m_grid;
    std::vector<CVectorGrid::Range> m_vecRange;  ///< around the cube that was last asked for
    int m_nCubeOfRanges = -1;
};

/// Marks the lighter of two neighbours as gone, walking from the shortest pile outwards; of equal weights the
/// longer one.
std::vector<char> suppressNeighbours(const std::vector<VectorPile>& vecPile, float fTolerance)
{
    CPileNeighbours neighbours(vecPile, fTolerance);
    std::vector<char> vecGone(vecPile.size(), 0);
    for (size_t nPile = 0; nPile < vecPile.size(); ++nPile) {
        if (vecGone[nPile]) {
            continue;
        }
        // The pile meets its neighbours in the order of the list, until one is heavier and takes it away.
        const std::vector<int> vecNeighbour = neighbours.behind(int(nPile), vecGone);
        int nFirstHeavier = int(vecPile.size());
        for (const int nOther : vecNeighbour) {
            if (vecPile[nOther].dfWeight > vecPile[nPile].dfWeight) {
                nFirstHeavier = std::min(nFirstHeavier, nOther);
            }
        }
        for (const int nOther : vecNeighbour) {
            if (nOther < nFirstHeavier) {
                vecGone[nOther] = 1;
            }
        }
        vecGone[nPile] = nFirstHeavier < int(vecPile.size());
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
    CProgress progress(report, QStringLiteral("%p%"), 0, (nCount - 1) / 1000);
    const std::optional<std::vector<PileSum>> vecSum = sumPiles(sortedByDStar(vecVector), fTolerance, nJobs,
                                                                report);
    progress.end();
    if (!vecSum) {
        return {};
    }
    const std::vector<VectorPile> vecPile = pilesByDStar(*vecSum);
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
