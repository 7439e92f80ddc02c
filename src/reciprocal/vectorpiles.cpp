#include "reciprocal/vectorpiles.h"

#include "imaging/sidebyside.h"
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
constexpr int g_nLanes = 8;
typedef float FloatLanes __attribute__((vector_size(4 * g_nLanes)));
typedef int32_t IntLanes __attribute__((vector_size(4 * g_nLanes)));
typedef double DoubleLanes __attribute__((vector_size(8 * g_nLanes)));

/// What a vector adds to a neighbour.
struct Contribution {
    float fX, fY, fZ;     ///< the vector itself
    float fSX, fSY, fSZ;  ///< weight times the vector
    double dfWeight;
    int nIndex;  ///< place in the list sorted by d*
};

/// The sums of up to eight vectors: `pOwn[nLane]` starts each, and the candidates, ascending by index, are
/// added where they lie within the tolerance and the lane's window.
///
/// A lane that a candidate does not concern adds −0, which changes no number, so that no lane branches.
/// bFloatWeights: all weights are single-precision numbers, and then the sum in double, rounded, is the sum
/// in single precision (rounding twice is innocent with more than twice the digits).
template <bool bFloatWeights>
__attribute__((always_inline)) inline void addLanes(const Contribution* pOwn, int nLanes,
                                                    const Contribution* pCandidate,
                                                    const Contribution* pCandidateEnd, float fSquareLimit,
                                                    const LengthWindow& window, PileSum* pSum)
{
    FloatLanes laneX = {}, laneY = {}, laneZ = {}, laneSX = {}, laneSY = {}, laneSZ = {}, laneW = {};
    IntLanes laneBegin = {}, laneEnd = {};
    for (int n = 0; n < nLanes; ++n) {
        laneX[n] = pOwn[n].fX;
        laneY[n] = pOwn[n].fY;
        laneZ[n] = pOwn[n].fZ;
        laneSX[n] = pOwn[n].fSX;
        laneSY[n] = pOwn[n].fSY;
        laneSZ[n] = pOwn[n].fSZ;
        laneW[n] = float(pOwn[n].dfWeight);
        laneBegin[n] = window.vecBegin[size_t(pOwn[n].nIndex)];
        laneEnd[n] = window.vecEnd[size_t(pOwn[n].nIndex)];
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
        if (nNextOwn < nLanes && pOwn[nNextOwn].nIndex == other.nIndex) {
            laneNear[nNextOwn++] = 0;  // a vector is no neighbour of itself
        }
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
    for (int n = 0; n < nLanes; ++n) {
        pSum[n] = {laneSX[n], laneSY[n], laneSZ[n], laneW[n]};
    }
}

using AddLanes = void (*)(const Contribution*, int, const Contribution*, const Contribution*, float,
                          const LengthWindow&, PileSum*);

template <bool bFloatWeights>
void addLanesPlain(const Contribution* pOwn, int nLanes, const Contribution* pBegin, const Contribution* pEnd,
                   float fSquareLimit, const LengthWindow& window, PileSum* pSum)
{
    addLanes<bFloatWeights>(pOwn, nLanes, pBegin, pEnd, fSquareLimit, window, pSum);
}

#if defined(__x86_64__)
// The same operations with wider registers; no fused multiply-add, so the numbers are the same.
template <bool bFloatWeights>
__attribute__((target("avx2"))) void addLanesWide(const Contribution* pOwn, int nLanes,
                                                  const Contribution* pBegin, const Contribution* pEnd,
                                                  float fSquareLimit, const LengthWindow& window,
                                                  PileSum* pSum)
{
    addLanes<bFloatWeights>(pOwn, nLanes, pBegin, pEnd, fSquareLimit, window, pSum);
}
#endif

template <bool bFloatWeights>
AddLanes chosenAddLanes()
{
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) {
        return addLanesWide<bFloatWeights>;
#endif
    }
    return addLanesPlain<bFloatWeights>;
}

/// Sums pile by pile for one thread: the buffers are its own.
class CPileWorker {
public:
    CPileWorker(const CVectorGrid& grid, const std::vector<Contribution>& vecByCube,
                const LengthWindow& window, float fSquareLimit, AddLanes pAddLanes,
                std::vector<PileSum>& vecSum)
        : m_grid(grid),
          m_vecByCube(vecByCube),
          m_window(window),
          m_fSquareLimit(fSquareLimit),
          m_pAddLanes(pAddLanes),
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
    void sumCube(const CVectorGrid::Range& own);

    const CVectorGrid& m_grid;
    const std::vector<Contribution>& m_vecByCube;
    const LengthWindow& m_window;
    const float m_fSquareLimit;
    const AddLanes m_pAddLanes;
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
        const Contribution* const pBegin = std::lower_bound(
            pCandidates, pCandidatesEnd, m_window.vecBegin[size_t(pOwn[0].nIndex)], isBefore);
        const Contribution* const pEnd = std::lower_bound(
            pBegin, pCandidatesEnd, m_window.vecEnd[size_t(pOwn[nLanes - 1].nIndex)], isBefore);
        PileSum aSum[g_nLanes];
        m_pAddLanes(pOwn, nLanes, pBegin, pEnd, m_fSquareLimit, m_window, aSum);
        for (int n = 0; n < nLanes; ++n) {
            m_vecSum[size_t(pOwn[n].nIndex)] = aSum[n];
        }
    }
}

}  // namespace

double cubeSide(float fTolerance)
{
    return std::max(double(fTolerance) * 1.001, 1e-18);
}

bool sumPiles(const std::vector<DifferenceVector>& vecVector, float fTolerance, int nJobs,
              std::vector<PileSum>& vecSum, CRunReport& report)
{
    const int nCubesOfPiece = 256;
    const int nCount = int(vecVector.size());
    std::vector<Contribution> vecOwn;
    std::vector<Vec3D> vecPoint;
    std::vector<double> vecDStar;
    vecOwn.reserve(vecVector.size());
    vecPoint.reserve(vecVector.size());
    vecDStar.reserve(vecVector.size());
    vecSum.clear();
    vecSum.reserve(vecVector.size());
    bool bFloatWeights = true;
    for (int n = 0; n < nCount; ++n) {
        const DifferenceVector& vector = vecVector[n];
        const Vec3D vecWeighted = scaledDouble(vector.v, vector.dfWeight);
        vecOwn.push_back({vector.v.x, vector.v.y, vector.v.z, vecWeighted.x, vecWeighted.y, vecWeighted.z,
                          vector.dfWeight, n});
        vecPoint.push_back(vector.v);
        vecDStar.push_back(vector.dfDStar);
        bFloatWeights = bFloatWeights && double(float(vector.dfWeight)) == vector.dfWeight;
        vecSum.push_back({vecWeighted.x, vecWeighted.y, vecWeighted.z, float(vector.dfWeight)});
    }
    const AddLanes pAddLanes = bFloatWeights ? chosenAddLanes<true>() : chosenAddLanes<false>();
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
                                                           pAddLanes, vecSum);
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
    return sideBySide((grid.cellCount() + nCubesOfPiece - 1) / nCubesOfPiece, nJobs, makeWorker, goOn);
}

}  // namespace tessera
