#include "reciprocal/vectorpiles.h"

#include "imaging/sidebyside.h"
#include "reciprocal/lanes.h"
#include "reciprocal/lengthwindow.h"
#include "reciprocal/vectorgrid.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>

namespace tessera {

namespace {

// The sums are in single precision, so their value depends on the order of the summands. The plain way walks
// all pairs (i, j > i) within the window on lengths, which gives to each vector k the values of its
// neighbours in ascending order, whichever side of k they lie on. The grid finds the same neighbours; they
// are sorted and added in that order, eight vectors k side by side.

/// What a vector adds to a neighbour.
struct Contribution {
    float fX, fY, fZ;     ///< the vector itself
    float fSX, fSY, fSZ;  ///< weight times the vector
    double dfWeight;
    int nIndex;  ///< place in the list sorted by d*
};

/// Eight vectors and their sums, side by side. A lane without a vector has an empty window.
struct PileLanes {
    float afX[g_nLanes] = {}, afY[g_nLanes] = {}, afZ[g_nLanes] = {};
    float afSX[g_nLanes] = {}, afSY[g_nLanes] = {}, afSZ[g_nLanes] = {}, afWeight[g_nLanes] = {};
    int anIndex[g_nLanes] = {}, anBegin[g_nLanes] = {}, anEnd[g_nLanes] = {};
};

/// Adds the candidates, ascending by index, to each of the sums that they concern: those of the vectors
/// within the tolerance that have the candidate in their windows.
///
/// The other lanes add −0, which changes no number, so that no lane branches. A weight is added in double
/// precision and the sum rounded.
TESSERA_WIDE_LANES void addCandidates(PileLanes& lanes, const Contribution* pCandidate,
                                      const Contribution* pCandidateEnd, float fSquareLimit)
{
    PileLanes sums = lanes;
    for (; pCandidate != pCandidateEnd; ++pCandidate) {
        const Contribution other = *pCandidate;
        // One loop for each kind of number, which all compilers make vector instructions of.
        int anNear[g_nLanes];
        for (int n = 0; n < g_nLanes; ++n) {
            const float fDX = other.fX - sums.afX[n];
            const float fDY = other.fY - sums.afY[n];
            const float fDZ = other.fZ - sums.afZ[n];
            // A vector is no neighbour of itself.
            anNear[n] = int(fDX * fDX + fDY * fDY + fDZ * fDZ <= fSquareLimit) &
                        int(sums.anBegin[n] <= other.nIndex) & int(other.nIndex < sums.anEnd[n]) &
                        int(other.nIndex != sums.anIndex[n]);
        }
        float afX[g_nLanes], afY[g_nLanes], afZ[g_nLanes];
        for (int n = 0; n < g_nLanes; ++n) {
            afX[n] = anNear[n] ? other.fSX : -0.f;
            afY[n] = anNear[n] ? other.fSY : -0.f;
            afZ[n] = anNear[n] ? other.fSZ : -0.f;
        }
        double adfWeight[g_nLanes];
        for (int n = 0; n < g_nLanes; ++n) {
            adfWeight[n] = anNear[n] ? other.dfWeight : -0.0;
        }
        for (int n = 0; n < g_nLanes; ++n) {
            sums.afSX[n] += afX[n];
            sums.afSY[n] += afY[n];
            sums.afSZ[n] += afZ[n];
            sums.afWeight[n] = float(double(sums.afWeight[n]) + adfWeight[n]);
        }
    }
    lanes = sums;
}

/// Sums pile by pile for one thread: the buffers are its own.
class CPileWorker {
public:
    CPileWorker(const CVectorGrid& grid, const std::vector<Contribution>& vecByCube,
                const LengthWindow& window, float fSquareLimit, std::vector<PileSum>& vecSum)
        : m_grid(grid),
          m_vecByCube(vecByCube),
          m_window(window),
          m_fSquareLimit(fSquareLimit),
          m_vecSum(vecSum)
    {}

    void sumCubes(int nFirst, int nEnd)
    {
        CVectorGrid::CWalk walk(m_grid);
        for (int nCube = nFirst; nCube < nEnd; ++nCube) {
            walk.neighbours(nCube, m_vecRange);
            sumCube(m_grid.cell(nCube));
        }
    }

private:
    void takeCandidates(const CVectorGrid::Range& own);
    PileLanes lanesOf(const Contribution* pOwn, int nLanes) const;
    void sumCube(const CVectorGrid::Range& own);

    const CVectorGrid& m_grid;
    const std::vector<Contribution>& m_vecByCube;
    const LengthWindow& m_window;
    const float m_fSquareLimit;
    std::vector<PileSum>& m_vecSum;
    std::vector<CVectorGrid::Range> m_vecRange;
    std::vector<uint64_t> m_vecKey;  ///< index in the list above the place among the cubes
    std::vector<Contribution> m_vecCandidate;
};

/// The vectors of the cubes around that lie in the window of any of the cube's own, in the order of the list.
void CPileWorker::takeCandidates(const CVectorGrid::Range& own)
{
    int nBegin = std::numeric_limits<int>::max();
    int nEnd = 0;
    for (int nPlace = own.nBegin; nPlace < own.nEnd; ++nPlace) {
        const size_t nIndex = size_t(m_vecByCube[nPlace].nIndex);
        nBegin = std::min(nBegin, m_window.vecBegin[nIndex]);
        nEnd = std::max(nEnd, m_window.vecEnd[nIndex]);
    }
    size_t nMost = 0;
    for (const CVectorGrid::Range& range : m_vecRange) {
        nMost += size_t(m_grid.cell(range.nEnd - 1).nEnd - m_grid.cell(range.nBegin).nBegin);
    }
    m_vecKey.resize(std::max(m_vecKey.size(), nMost));
    size_t nTaken = 0;
    for (const CVectorGrid::Range& range : m_vecRange) {
        const int nLast = m_grid.cell(range.nEnd - 1).nEnd;
        for (int nPlace = m_grid.cell(range.nBegin).nBegin; nPlace < nLast; ++nPlace) {
            const int nIndex = m_grid.order()[nPlace];
            m_vecKey[nTaken] = uint64_t(nIndex) << 32 | uint64_t(nPlace);
            nTaken += int(nIndex >= nBegin) & int(nIndex < nEnd);
        }
    }
    std::sort(m_vecKey.begin(), m_vecKey.begin() + ptrdiff_t(nTaken));
    m_vecCandidate.clear();
    for (size_t n = 0; n < nTaken; ++n) {
        m_vecCandidate.push_back(m_vecByCube[size_t(m_vecKey[n] & 0xffffffff)]);
    }
}

/// Some vectors of a cube, each with itself in its sums.
PileLanes CPileWorker::lanesOf(const Contribution* pOwn, int nLanes) const
{
    PileLanes lanes;
    for (int n = 0; n < nLanes; ++n) {
        lanes.afX[n] = pOwn[n].fX;
        lanes.afY[n] = pOwn[n].fY;
        lanes.afZ[n] = pOwn[n].fZ;
        lanes.afSX[n] = pOwn[n].fSX;
        lanes.afSY[n] = pOwn[n].fSY;
        lanes.afSZ[n] = pOwn[n].fSZ;
        lanes.afWeight[n] = float(pOwn[n].dfWeight);
        lanes.anIndex[n] = pOwn[n].nIndex;
        lanes.anBegin[n] = m_window.vecBegin[pOwn[n].nIndex];
        lanes.anEnd[n] = m_window.vecEnd[pOwn[n].nIndex];
    }
    return lanes;
}

void CPileWorker::sumCube(const CVectorGrid::Range& own)
{
    takeCandidates(own);
    const auto isBefore = [](const Contribution& candidate, int nIndex) { return candidate.nIndex < nIndex; };
    const Contribution* const pCandidates = m_vecCandidate.data();
    const Contribution* const pCandidatesEnd = pCandidates + m_vecCandidate.size();
    for (int nFirst = own.nBegin; nFirst < own.nEnd; nFirst += g_nLanes) {
        const int nLanes = std::min(g_nLanes, own.nEnd - nFirst);
        const Contribution* const pOwn = m_vecByCube.data() + nFirst;
        // Ascending indices: the first lane's window begins first and the last lane's ends last.
        const Contribution* const pBegin = std::lower_bound(pCandidates, pCandidatesEnd,
                                                            m_window.vecBegin[pOwn[0].nIndex], isBefore);
        const Contribution* const pEnd = std::lower_bound(pBegin, pCandidatesEnd,
                                                          m_window.vecEnd[pOwn[nLanes - 1].nIndex], isBefore);
        PileLanes lanes = lanesOf(pOwn, nLanes);
        addCandidates(lanes, pBegin, pEnd, m_fSquareLimit);
        for (int n = 0; n < nLanes; ++n) {
            m_vecSum[pOwn[n].nIndex] = {lanes.afSX[n], lanes.afSY[n], lanes.afSZ[n], lanes.afWeight[n]};
        }
    }
}

}  // namespace

double cubeSide(float fTolerance)
{
    return std::max(double(fTolerance) * 1.001, 1e-18);
}

std::optional<std::vector<PileSum>> sumPiles(const std::vector<DifferenceVector>& vecVector, float fTolerance,
                                             int nJobs, CRunReport& report)
{
    const int nCubesOfPiece = 256;
    const int nCount = int(vecVector.size());
    std::vector<Contribution> vecOwn;
    std::vector<Vec3D> vecPoint;
    std::vector<double> vecDStar;
    vecOwn.reserve(vecVector.size());
    vecPoint.reserve(vecVector.size());
    vecDStar.reserve(vecVector.size());
    std::vector<PileSum> vecSum;
    vecSum.reserve(vecVector.size());
    for (int n = 0; n < nCount; ++n) {
        const DifferenceVector& vector = vecVector[n];
        const Vec3D vecWeighted = scaledDouble(vector.v, vector.dfWeight);
        vecOwn.push_back({vector.v.x, vector.v.y, vector.v.z, vecWeighted.x, vecWeighted.y, vecWeighted.z,
                          vector.dfWeight, n});
        vecPoint.push_back(vector.v);
        vecDStar.push_back(vector.dfDStar);
        vecSum.push_back({vecWeighted.x, vecWeighted.y, vecWeighted.z, float(vector.dfWeight)});
    }
    const LengthWindow window = windowOnLengths(vecDStar, double(fTolerance) * 0.5);
    const CVectorGrid grid(vecPoint, cubeSide(fTolerance));
    std::vector<Contribution> vecByCube;
    vecByCube.reserve(grid.order().size());
    for (const int nIndex : grid.order()) {
        vecByCube.push_back(vecOwn[nIndex]);
    }
    std::atomic<int> nDone{0};
    const auto makeWorker = [&]() -> FnPiece {
        const auto pWorker = std::make_shared<CPileWorker>(grid, vecByCube, window, fTolerance * fTolerance,
                                                           vecSum);
        return [&, pWorker](int nPiece) {
            const int nFirst = nPiece * nCubesOfPiece;
            const int nEnd = std::min(nFirst + nCubesOfPiece, grid.cellCount());
            pWorker->sumCubes(nFirst, nEnd);
            nDone += grid.cell(nEnd - 1).nEnd - grid.cell(nFirst).nBegin;
        };
    };
    const auto goOn = [&] {
        report.setProgress(nDone / 1000);
        return report.goOn();
    };
    const int nPieces = (grid.cellCount() + nCubesOfPiece - 1) / nCubesOfPiece;
    if (!sideBySide(nPieces, nJobs, makeWorker, goOn)) {
        return std::nullopt;
    }
    return vecSum;
}

}  // namespace tessera
