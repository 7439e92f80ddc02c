#include "reciprocal/indexspreading.h"

#include "crystal/reflectionindices.h"
#include "reciprocal/basissolver.h"
#include "reciprocal/bydstar.h"
#include "records/progress.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tessera {

namespace {

/// isCloseToInteger() for one number, without calls of the mathematical library in the common range:
/// cutting off the part behind the point after adding a half outwards is the same rounding.
inline bool isNearWhole(float fValue, float fThreshold)
{
    if (!(std::fabs(fValue) < 1e9f)) {
        return isCloseToInteger(Vec3D{fValue, 0, 0}, fThreshold);
    }
    const double dfValue = double(fValue);
    const double dfRounded = double(int32_t(dfValue < 0 ? dfValue - 0.5 : dfValue + 0.5));
    return float(std::fabs(dfValue - dfRounded)) <= fThreshold;
}

inline bool isNearWhole(const Vec3D& hkl, float fThreshold)
{
    return isNearWhole(hkl.x, fThreshold) && isNearWhole(hkl.y, fThreshold) && isNearWhole(hkl.z, fThreshold);
}

// Steps to neighbours are solved four at a time; each operation rounds as in CBasisSolver::solve().
constexpr int g_nLanes = 4;
typedef float FloatLanes __attribute__((vector_size(4 * g_nLanes)));
typedef double DoubleLanes __attribute__((vector_size(8 * g_nLanes)));
typedef int32_t IntLanes __attribute__((vector_size(4 * g_nLanes)));
typedef int64_t LongLanes __attribute__((vector_size(8 * g_nLanes)));

/// Columns of numbers, one row per step from a neighbour to the reflection at hand.
struct StepTable {
    std::vector<int> vecPlace;            ///< of the neighbour, among the indexed ones
    std::vector<float> vecX, vecY, vecZ;  ///< the step, Å⁻¹
    std::vector<float> vecH, vecK, vecL;  ///< its fractional indices
    std::vector<float> vecWeight;         ///< falls with its length
    std::vector<int32_t> vecWhole;        ///< 0 not whole, 1 too large for the fast test, else whole
    size_t nRows = 0;

    /// Room for nMost rows and for the lanes behind them.
    void reserve(size_t nMost)
    {
        const size_t nSize = nMost + g_nLanes;
        vecPlace.resize(nSize);
        for (std::vector<float>* pColumn : {&vecX, &vecY, &vecZ, &vecH, &vecK, &vecL, &vecWeight}) {
            pColumn->resize(nSize);
        }
        vecWhole.resize(nSize);
    }
};

template <class Lanes, class T>
inline Lanes lanesAt(const std::vector<T>& vecColumn, size_t nRow)
{
    Lanes lanes;
    std::memcpy(&lanes, vecColumn.data() + nRow, sizeof(lanes));
    return lanes;
}

template <class Lanes, class T>
inline void putLanes(std::vector<T>& vecColumn, size_t nRow, const Lanes& lanes)
{
    std::memcpy(vecColumn.data() + nRow, &lanes, sizeof(lanes));
}

/// Fills the columns behind the steps.
__attribute__((always_inline)) inline void solveSteps(StepTable& table, const CBasisSolver& solver,
                                                      float fThreshold)
{
    for (size_t nRow = 0; nRow < table.nRows; nRow += g_nLanes) {
        const FloatLanes laneX = lanesAt<FloatLanes>(table.vecX, nRow);
        const FloatLanes laneY = lanesAt<FloatLanes>(table.vecY, nRow);
        const FloatLanes laneZ = lanesAt<FloatLanes>(table.vecZ, nRow);
        const DoubleLanes laneDX = __builtin_convertvector(laneX, DoubleLanes);
        const DoubleLanes laneDY = __builtin_convertvector(laneY, DoubleLanes);
        const DoubleLanes laneDZ = __builtin_convertvector(laneZ, DoubleLanes);
        IntLanes laneWhole = IntLanes{} - 1;
        LongLanes laneLarge = {};
        std::vector<float>* const apColumn[3] = {&table.vecH, &table.vecK, &table.vecL};
        for (int n = 0; n < 3; ++n) {
            const double* pRow = solver.cofactors() + 3 * n;
            const DoubleLanes laneIndex = (laneDX * pRow[0] + laneDY * pRow[1] + laneDZ * pRow[2]) /
                                          solver.determinant();
            const FloatLanes laneSingle = __builtin_convertvector(laneIndex, FloatLanes);
            putLanes(*apColumn[n], nRow, laneSingle);
            const DoubleLanes laneValue = __builtin_convertvector(laneSingle, DoubleLanes);
            laneLarge |= ~((laneValue < 1e9) & (laneValue > -1e9));
            const DoubleLanes laneOutwards = laneValue < 0 ? laneValue - 0.5 : laneValue + 0.5;
            const DoubleLanes laneRounded = __builtin_convertvector(
                __builtin_convertvector(laneOutwards, IntLanes), DoubleLanes);
            const FloatLanes laneOff = __builtin_convertvector(laneValue - laneRounded, FloatLanes);
            laneWhole &= (laneOff <= fThreshold) & (laneOff >= -fThreshold);
        }
        const IntLanes laneIsLarge = __builtin_convertvector(laneLarge, IntLanes);
        putLanes(table.vecWhole, nRow, (laneWhole & ~laneIsLarge) | (laneIsLarge & 1));
        const FloatLanes laneSquare = laneX * laneX + laneY * laneY + laneZ * laneZ;
        FloatLanes laneLength;
        for (int n = 0; n < g_nLanes; ++n) {
            laneLength[n] = std::sqrt(laneSquare[n]);
        }
        putLanes(table.vecWeight, nRow,
                 __builtin_convertvector(1 / (__builtin_convertvector(laneLength, DoubleLanes) + 0.001),
                                         FloatLanes));
    }
}

using SolveSteps = void (*)(StepTable&, const CBasisSolver&, float);

void solveStepsPlain(StepTable& table, const CBasisSolver& solver, float fThreshold)
{
    solveSteps(table, solver, fThreshold);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void solveStepsWide(StepTable& table, const CBasisSolver& solver,
                                                    float fThreshold)
{
    solveSteps(table, solver, fThreshold);
}
#endif

SolveSteps chosenSolveSteps()
{
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) {
        return solveStepsWide;
#endif
    }
    return solveStepsPlain;
}

/// The state of one spreading, with the reflections in order of d*.
///
/// A reflection that failed is looked at again only as far as others have been indexed since: if none of them
/// is a neighbour with a whole step, its sums are what they were. Otherwise the sums are formed anew, over
/// all its neighbours with whole steps and in the order of the walk, as single precision asks for.
class CIndexSpreading {
public:
    CIndexSpreading(const QList<Peak3D>& listSorted, const CBasisSolver& solver, float fThreshold,
                    float fRadius);

    /// One pass over all reflections. nIndexed: how many were indexed in it. False when stopped.
    bool pass(int& nIndexed, CRunReport& report);
    const std::vector<Vec3D>& indices() const { return m_vecHKL; }

private:
    void setWindow();
    /// Fills the table with the neighbours of i from place nFirst of the indexed ones on, last one first.
    void takeNeighbours(int i, size_t nFirst);
    /// Fills the table with the indexed ones of the given places.
    void takePlaces(int i, const std::vector<int>& vecPlace);
    void setSteps(int i);
    /// Solves the steps of the table and leaves only the whole ones.
    void keepWholeSteps();
    /// The table's places in the order of the walk from i: inwards from it, then outwards.
    std::vector<int> placesInWalkOrder(int i, const std::vector<int>& vecMore) const;
    /// The indices of i by the whole steps of the table, by plain division where it is empty.
    Vec3D weightedIndices(int i) const;
    /// Forms the indices of i, unless nothing has changed since it failed. False if it is not indexed.
    bool index(int i);
    void keepForRetry(int i);

    const int m_nCount;
    const CBasisSolver& m_solver;
    const float m_fThreshold;
    const float m_fRadius;
    const float m_fRadiusSquare;
    std::vector<Vec3D> m_vecPoint;
    std::vector<double> m_vecDStar;
    std::vector<int> m_vecBegin, m_vecEnd;  ///< the window on d* of each reflection
    std::vector<Vec3D> m_vecHKL;
    std::vector<char> m_vecTried;
    std::vector<char> m_vecIndexed;
    // The indexed reflections, in the order in which they came; ascending during the first pass.
    std::vector<int> m_vecOrder;
    std::vector<Vec3D> m_vecRounded;
    std::vector<float> m_vecX, m_vecY, m_vecZ;
    // Of reflections that failed: how many indexed ones they have seen, and the places of those with whole
    // steps, as long as there is room.
    std::vector<size_t> m_vecSeen;
    std::vector<std::vector<int>> m_vecKept;
    std::vector<char> m_vecIsKept;
    size_t m_nKept = 0;
    StepTable m_table;
    const SolveSteps m_pSolveSteps = chosenSolveSteps();
};

CIndexSpreading::CIndexSpreading(const QList<Peak3D>& listSorted, const CBasisSolver& solver,
                                 float fThreshold, float fRadius)
    : m_nCount(listSorted.size()),
      m_solver(solver),
      m_fThreshold(fThreshold),
      m_fRadius(fRadius),
      m_fRadiusSquare(fRadius * fRadius)
{
    const size_t nCount = size_t(m_nCount);
    m_vecPoint.reserve(nCount);
    m_vecDStar.reserve(nCount);
    for (const Peak3D& peak : listSorted) {
        m_vecPoint.push_back(peak.point());
        m_vecDStar.push_back(peak.dfDStar);
    }
    m_vecHKL.resize(nCount);
    m_vecTried.assign(nCount, 0);
    m_vecIndexed.assign(nCount, 0);
    m_vecSeen.assign(nCount, 0);
    m_vecKept.resize(nCount);
    m_vecIsKept.assign(nCount, 0);
    m_table.reserve(nCount);
    setWindow();
}

void CIndexSpreading::setWindow()
{
    const double dfRadius = double(m_fRadius);
    m_vecBegin.resize(size_t(m_nCount));
    m_vecEnd.resize(size_t(m_nCount));
    int nBegin = 0;
    int nEnd = 0;
    for (int i = 0; i < m_nCount; ++i) {
        const double dfDStar = m_vecDStar[i];
        m_vecBegin[i] = i;
        m_vecEnd[i] = i + 1;
        if (!std::isfinite(dfDStar)) {
            continue;
        }
        while (nBegin < i && !(dfDStar - m_vecDStar[nBegin] < dfRadius)) {
            ++nBegin;
        }
        nEnd = std::max(nEnd, i + 1);
        while (nEnd < m_nCount && m_vecDStar[nEnd] - dfDStar < dfRadius) {
            ++nEnd;
        }
        // Record 0 is no neighbour of a reflection behind it.
        m_vecBegin[i] = std::min(std::max(nBegin, 1), i);
        m_vecEnd[i] = nEnd;
    }
}

void CIndexSpreading::takeNeighbours(int i, size_t nFirst)
{
    const float fX = m_vecPoint[i].x;
    const float fY = m_vecPoint[i].y;
    const float fZ = m_vecPoint[i].z;
    int* const pPlace = m_table.vecPlace.data();
    size_t nNear = 0;
    for (size_t nPlace = m_vecOrder.size(); nPlace-- > nFirst;) {
        const float fDX = fX - m_vecX[nPlace];
        const float fDY = fY - m_vecY[nPlace];
        const float fDZ = fZ - m_vecZ[nPlace];
        pPlace[nNear] = int(nPlace);
        nNear += fDX * fDX + fDY * fDY + fDZ * fDZ <= m_fRadiusSquare;
    }
    const auto isOutside = [&](int nPlace) {
        const int j = m_vecOrder[nPlace];
        return j < m_vecBegin[i] || j >= m_vecEnd[i];
    };
    m_table.nRows = size_t(std::remove_if(pPlace, pPlace + nNear, isOutside) - pPlace);
    setSteps(i);
}

void CIndexSpreading::takePlaces(int i, const std::vector<int>& vecPlace)
{
    std::copy(vecPlace.begin(), vecPlace.end(), m_table.vecPlace.begin());
    m_table.nRows = vecPlace.size();
    setSteps(i);
}

void CIndexSpreading::setSteps(int i)
{
    const Vec3D vecPoint = m_vecPoint[i];
    for (size_t nRow = 0; nRow < m_table.nRows; ++nRow) {
        const size_t nPlace = size_t(m_table.vecPlace[nRow]);
        m_table.vecX[nRow] = vecPoint.x - m_vecX[nPlace];
        m_table.vecY[nRow] = vecPoint.y - m_vecY[nPlace];
        m_table.vecZ[nRow] = vecPoint.z - m_vecZ[nPlace];
    }
}

void CIndexSpreading::keepWholeSteps()
{
    StepTable& table = m_table;
    m_pSolveSteps(table, m_solver, m_fThreshold);
    size_t nWhole = 0;
    for (size_t n = 0; n < table.nRows; ++n) {
        if (table.vecWhole[n] == 0) {
            continue;
        }
        const Vec3D vecFraction = {table.vecH[n], table.vecK[n], table.vecL[n]};
        if (table.vecWhole[n] == 1 && !isNearWhole(vecFraction, m_fThreshold)) {
            continue;
        }
        table.vecPlace[nWhole] = table.vecPlace[n];
        table.vecH[nWhole] = vecFraction.x;
        table.vecK[nWhole] = vecFraction.y;
        table.vecL[nWhole] = vecFraction.z;
        table.vecWeight[nWhole] = table.vecWeight[n];
        ++nWhole;
    }
    table.nRows = nWhole;
}

std::vector<int> CIndexSpreading::placesInWalkOrder(int i, const std::vector<int>& vecMore) const
{
    std::vector<int> vecPlace(m_table.vecPlace.begin(), m_table.vecPlace.begin() + ptrdiff_t(m_table.nRows));
    vecPlace.insert(vecPlace.end(), vecMore.begin(), vecMore.end());
    std::sort(vecPlace.begin(), vecPlace.end(), [&](int nA, int nB) {
        const int a = m_vecOrder[nA];
        const int b = m_vecOrder[nB];
        if ((a < i) != (b < i)) {
            return a < i;
        }
        return a < i ? a > b : a < b;
    });
    return vecPlace;
}

Vec3D CIndexSpreading::weightedIndices(int i) const
{
    if (m_table.nRows == 0) {
        return m_solver.solve(m_vecPoint[i]);
    }
    Vec3D vecSum;
    float fSum = 0;
    for (size_t n = 0; n < m_table.nRows; ++n) {
        const Vec3D vecFraction = {m_table.vecH[n], m_table.vecK[n], m_table.vecL[n]};
        const float fWeight = m_table.vecWeight[n];
        vecSum = vecSum + scaled(vecFraction + m_vecRounded[size_t(m_table.vecPlace[n])], fWeight);
        fSum += fWeight;
    }
    return {vecSum.x / fSum, vecSum.y / fSum, vecSum.z / fSum};
}

bool CIndexSpreading::index(int i)
{
    const size_t n = size_t(i);
    const bool bFirstTime = m_vecTried[n] == 0;
    m_vecTried[n] = 1;
    // In the first pass the indexed ones stand in order of d*, all of them before i.
    const size_t nFirst = bFirstTime
                              ? size_t(std::lower_bound(m_vecOrder.begin(), m_vecOrder.end(), m_vecBegin[n]) -
                                       m_vecOrder.begin())
                              : m_vecSeen[n];
    takeNeighbours(i, nFirst);
    keepWholeSteps();
    m_vecSeen[n] = m_vecOrder.size();
    if (!bFirstTime) {
        if (m_table.nRows == 0) {
            return false;
        }
        if (!m_vecIsKept[n]) {
            takeNeighbours(i, 0);
            keepWholeSteps();
        }
        takePlaces(i, placesInWalkOrder(i, m_vecKept[n]));
        keepWholeSteps();
    }
    m_vecHKL[n] = weightedIndices(i);
    if (!isNearWhole(m_vecHKL[n], m_fThreshold)) {
        keepForRetry(i);
        return false;
    }
    m_vecIndexed[n] = 1;
    m_nKept -= m_vecKept[n].size();
    std::vector<int>().swap(m_vecKept[n]);
    m_vecOrder.push_back(i);
    m_vecRounded.push_back({float(roundedIndex(double(m_vecHKL[n].x))),
                            float(roundedIndex(double(m_vecHKL[n].y))),
                            float(roundedIndex(double(m_vecHKL[n].z)))});
    m_vecX.push_back(m_vecPoint[n].x);
    m_vecY.push_back(m_vecPoint[n].y);
    m_vecZ.push_back(m_vecPoint[n].z);
    return true;
}

void CIndexSpreading::keepForRetry(int i)
{
    constexpr size_t nMaxKept = 50000000;  // entries, 200 MB
    std::vector<int>& vecKept = m_vecKept[i];
    m_nKept -= vecKept.size();
    m_vecIsKept[i] = m_nKept + m_table.nRows <= nMaxKept;
    if (m_vecIsKept[i]) {
        vecKept.assign(m_table.vecPlace.begin(), m_table.vecPlace.begin() + ptrdiff_t(m_table.nRows));
    } else {
        std::vector<int>().swap(vecKept);
    }
    m_nKept += vecKept.size();
}

bool CIndexSpreading::pass(int& nIndexed, CRunReport& report)
{
    nIndexed = 0;
    for (int i = 0; i < m_nCount; ++i) {
        if (i % 100 == 0 || i == m_nCount - 1) {
            report.setProgress(i / 100);
            if (!report.goOn()) {
                return false;
            }
        }
        if (!m_vecIndexed[i]) {
            nIndexed += index(i);
        }
    }
    return true;
}

}  // namespace

bool indexReflections(QList<Peak3D>& listPeak, const ReciprocalBasis& basis, float fThreshold, float fRadius,
                      CRunReport& report)
{
    const CBasisSolver solver(basis);
    if (!solver.isValid()) {
        return true;
    }
    QList<Peak3D> listSorted = listPeak;
    sortByDStar(listSorted);
    CIndexSpreading spreading(listSorted, solver, fThreshold, fRadius);
    CProgress progress(report, QStringLiteral("%p%"), 0, (listSorted.size() - 1) / 100);
    int nIndexed = 0;
    do {
        if (!spreading.pass(nIndexed, report)) {
            return false;
        }
    } while (nIndexed > 0);
    progress.end();
    for (int n = 0; n < listSorted.size(); ++n) {
        const Vec3D& vecHKL = spreading.indices()[n];
        listSorted[n].setHKL(double(vecHKL.x), double(vecHKL.y), double(vecHKL.z));
    }
    listPeak = listSorted;
    return true;
}

}  // namespace tessera
