// The spreading of indices from reflection to reflection.
#include "crystal/reflectionindices.h"
#include "reciprocal/basissolver.h"
#include "reciprocal/bydstar.h"
#include "reciprocal/indexing.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace {

/// isCloseToInteger() for one number, without calls of the mathematical library in the common range:
/// cutting off the part behind the point after adding a half outwards is the same rounding.
inline bool isNearWhole(float fValue, float fThreshold)
{
    if (!(std::fabs(fValue) < 1e9f))
        return isCloseToInteger(Vec3D{fValue, 0, 0}, fThreshold);
    const double dfValue = double(fValue);
    const double dfRounded = double(int32_t(dfValue < 0 ? dfValue - 0.5 : dfValue + 0.5));
    return float(std::fabs(dfValue - dfRounded)) <= fThreshold;
}

inline bool isNearWhole(const Vec3D& hkl, float fThreshold)
{
    return isNearWhole(hkl.x, fThreshold) && isNearWhole(hkl.y, fThreshold) && isNearWhole(hkl.z, fThreshold);
}

/// Weighted indices of one reflection, gathered from its neighbours in single precision.
struct IndexSum {
    Vec3D vecHKL;
    float fWeight = 0;
};

// Steps to neighbours are solved four at a time; each operation rounds as in CBasisSolver::solve().
constexpr int g_nLanes = 4;
typedef float FloatLanes __attribute__((vector_size(4 * g_nLanes)));
typedef double DoubleLanes __attribute__((vector_size(8 * g_nLanes)));
typedef int32_t IntLanes __attribute__((vector_size(4 * g_nLanes)));
typedef int64_t LongLanes __attribute__((vector_size(8 * g_nLanes)));

struct SolvedSteps {
    float fStepX[g_nLanes], fStepY[g_nLanes], fStepZ[g_nLanes];  ///< in
    float fH[g_nLanes], fK[g_nLanes], fL[g_nLanes];              ///< fractional indices of the steps
    float fWeight[g_nLanes];
    int32_t nWhole[g_nLanes];  ///< not 0: the step is whole
    bool bLarge;               ///< an index is too large for the fast test
};

__attribute__((always_inline)) inline void solveSteps(SolvedSteps& steps, const CBasisSolver& solver,
                                                      float fThreshold)
{
    FloatLanes laneX, laneY, laneZ;
    std::memcpy(&laneX, steps.fStepX, sizeof(laneX));
    std::memcpy(&laneY, steps.fStepY, sizeof(laneY));
    std::memcpy(&laneZ, steps.fStepZ, sizeof(laneZ));
    const DoubleLanes laneDX = __builtin_convertvector(laneX, DoubleLanes);
    const DoubleLanes laneDY = __builtin_convertvector(laneY, DoubleLanes);
    const DoubleLanes laneDZ = __builtin_convertvector(laneZ, DoubleLanes);
    float* const apOut[3] = {steps.fH, steps.fK, steps.fL};
    IntLanes laneWhole = IntLanes{} - 1;
    LongLanes laneLarge = {};
    for (int n = 0; n < 3; ++n) {
        const double* pRow = solver.cofactors() + 3 * n;
        const DoubleLanes laneIndex =
            (laneDX * pRow[0] + laneDY * pRow[1] + laneDZ * pRow[2]) / solver.determinant();
        const FloatLanes laneSingle = __builtin_convertvector(laneIndex, FloatLanes);
        std::memcpy(apOut[n], &laneSingle, sizeof(laneSingle));
        const DoubleLanes laneValue = __builtin_convertvector(laneSingle, DoubleLanes);
        laneLarge |= ~((laneValue < 1e9) & (laneValue > -1e9));
        const DoubleLanes laneOutwards = laneValue < 0 ? laneValue - 0.5 : laneValue + 0.5;
        const DoubleLanes laneRounded =
            __builtin_convertvector(__builtin_convertvector(laneOutwards, IntLanes), DoubleLanes);
        const FloatLanes laneOff = __builtin_convertvector(laneValue - laneRounded, FloatLanes);
        laneWhole &= (laneOff <= fThreshold) & (laneOff >= -fThreshold);
    }
    const FloatLanes laneSquare = laneX * laneX + laneY * laneY + laneZ * laneZ;
    FloatLanes laneLength;
    for (int n = 0; n < g_nLanes; ++n)
        laneLength[n] = std::sqrt(laneSquare[n]);
    const FloatLanes laneWeight =
        __builtin_convertvector(1 / (__builtin_convertvector(laneLength, DoubleLanes) + 0.001), FloatLanes);
    std::memcpy(steps.fWeight, &laneWeight, sizeof(laneWeight));
    std::memcpy(steps.nWhole, &laneWhole, sizeof(laneWhole));
    steps.bLarge = false;
    for (int n = 0; n < g_nLanes; ++n)
        steps.bLarge = steps.bLarge || laneLarge[n] != 0;
}

using SolveSteps = void (*)(SolvedSteps&, const CBasisSolver&, float);

void solveStepsPlain(SolvedSteps& steps, const CBasisSolver& solver, float fThreshold)
{
    solveSteps(steps, solver, fThreshold);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void solveStepsWide(SolvedSteps& steps, const CBasisSolver& solver,
                                                    float fThreshold)
{
    solveSteps(steps, solver, fThreshold);
}
#endif

SolveSteps chosenSolveSteps()
{
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2"))
        return solveStepsWide;
#endif
    return solveStepsPlain;
}

/// The state of one spreading, with the reflections in order of d*.
class CIndexSpreading {
public:
    CIndexSpreading(const QList<Peak3D>& listSorted, const CBasisSolver& solver, float fThreshold,
                    float fRadius);

    /// One pass over all reflections. nIndexed: how many were indexed in it. False when stopped.
    bool pass(int& nIndexed, CRunReport& report);
    const std::vector<Vec3D>& indices() const { return m_vecHKL; }

private:
    void setWindow();
    bool isNeighbour(int i, int j) const
    {
        return squaredLength(m_vecPoint[size_t(i)] - m_vecPoint[size_t(j)]) <= m_fRadiusSquare;
    }
    /// Adds what indexed neighbour j says about i. False, with the sum as it was, if the step is not whole.
    bool addNeighbour(int i, int j, IndexSum& sum) const;
    /// addNeighbour() for a list of neighbours, in its order.
    IndexSum sumOver(int i, const int* pNear, size_t nNear) const;
    IndexSum sumOfIndexedNeighbours(int i);
    IndexSum sumOfWholeSteps(int i);

    const int m_nCount;
    const CBasisSolver& m_solver;
    const float m_fThreshold;
    const float m_fRadius;
    const float m_fRadiusSquare;
    std::vector<Vec3D> m_vecPoint;
    std::vector<double> m_vecDStar;
    std::vector<int> m_vecBegin, m_vecEnd;  ///< the window on d* of each reflection
    std::vector<Vec3D> m_vecHKL;
    std::vector<Vec3D> m_vecRounded;  ///< of the indexed ones
    std::vector<char> m_vecIndexed;
    int m_nIndexedEnd = 0;  ///< one past the last indexed reflection
    // The points again, apart and not a number until indexed: then the distance test fails by itself.
    std::vector<float> m_vecX, m_vecY, m_vecZ;
    std::vector<int> m_vecNear;
    // Whether a step is whole does not change, so a reflection that failed keeps the neighbours with whole
    // steps, indexed or not, for the next passes, as long as there is room.
    std::vector<std::vector<int>> m_vecWholeStep;
    std::vector<char> m_vecTried;  ///< 0 not yet, 1 failed, 2 failed and whole steps kept
    size_t m_nKept = 0;
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
    m_vecRounded.resize(nCount);
    m_vecIndexed.assign(nCount, 0);
    m_vecX.assign(nCount, std::numeric_limits<float>::quiet_NaN());
    m_vecY = m_vecX;
    m_vecZ = m_vecX;
    m_vecNear.resize(nCount + 1);
    m_vecWholeStep.resize(nCount);
    m_vecTried.assign(nCount, 0);
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
        const double dfDStar = m_vecDStar[size_t(i)];
        m_vecBegin[size_t(i)] = i;
        m_vecEnd[size_t(i)] = i + 1;
        if (!std::isfinite(dfDStar))
            continue;
        while (nBegin < i && !(dfDStar - m_vecDStar[size_t(nBegin)] < dfRadius))
            ++nBegin;
        nEnd = std::max(nEnd, i + 1);
        while (nEnd < m_nCount && m_vecDStar[size_t(nEnd)] - dfDStar < dfRadius)
            ++nEnd;
        // Record 0 is no neighbour of a reflection behind it.
        m_vecBegin[size_t(i)] = std::min(std::max(nBegin, 1), i);
        m_vecEnd[size_t(i)] = nEnd;
    }
}

bool CIndexSpreading::addNeighbour(int i, int j, IndexSum& sum) const
{
    const Vec3D vecStep = m_vecPoint[size_t(i)] - m_vecPoint[size_t(j)];
    const Vec3D vecFraction = m_solver.solve(vecStep);
    if (!isNearWhole(vecFraction, m_fThreshold))
        return false;
    const float fWeight = float(1 / (double(length(vecStep)) + 0.001));
    sum.vecHKL = sum.vecHKL + scaled(vecFraction + m_vecRounded[size_t(j)], fWeight);
    sum.fWeight += fWeight;
    return true;
}

IndexSum CIndexSpreading::sumOver(int i, const int* pNear, size_t nNear) const
{
    IndexSum sum;
    SolvedSteps steps = {};
    const Vec3D vecPoint = m_vecPoint[size_t(i)];
    for (size_t nFirst = 0; nFirst < nNear; nFirst += g_nLanes) {
        const size_t nLanes = std::min(size_t(g_nLanes), nNear - nFirst);
        for (size_t n = 0; n < nLanes; ++n) {
            const Vec3D vecStep = vecPoint - m_vecPoint[size_t(pNear[nFirst + n])];
            steps.fStepX[n] = vecStep.x;
            steps.fStepY[n] = vecStep.y;
            steps.fStepZ[n] = vecStep.z;
        }
        m_pSolveSteps(steps, m_solver, m_fThreshold);
        for (size_t n = 0; n < nLanes; ++n) {
            if (steps.bLarge) {
                addNeighbour(i, pNear[nFirst + n], sum);
            } else if (steps.nWhole[n]) {
                const Vec3D& vecRounded = m_vecRounded[size_t(pNear[nFirst + n])];
                sum.vecHKL = sum.vecHKL + scaled(Vec3D{steps.fH[n], steps.fK[n], steps.fL[n]} + vecRounded,
                                                 steps.fWeight[n]);
                sum.fWeight += steps.fWeight[n];
            }
        }
    }
    return sum;
}

IndexSum CIndexSpreading::sumOfIndexedNeighbours(int i)
{
    const float fX = m_vecPoint[size_t(i)].x;
    const float fY = m_vecPoint[size_t(i)].y;
    const float fZ = m_vecPoint[size_t(i)].z;
    size_t nNear = 0;
    const auto look = [&](int j) {
        const float fDX = fX - m_vecX[size_t(j)];
        const float fDY = fY - m_vecY[size_t(j)];
        const float fDZ = fZ - m_vecZ[size_t(j)];
        m_vecNear[nNear] = j;
        nNear += fDX * fDX + fDY * fDY + fDZ * fDZ <= m_fRadiusSquare;
    };
    for (int j = std::min(i, m_nIndexedEnd) - 1; j >= m_vecBegin[size_t(i)]; --j)
        look(j);
    const int nEnd = std::min(m_vecEnd[size_t(i)], m_nIndexedEnd);
    for (int j = i + 1; j < nEnd; ++j)
        look(j);
    return sumOver(i, m_vecNear.data(), nNear);
}

IndexSum CIndexSpreading::sumOfWholeSteps(int i)
{
    constexpr size_t nMaxKept = 50000000;  // entries, 200 MB
    std::vector<int>& vecStep = m_vecWholeStep[size_t(i)];
    if (m_vecTried[size_t(i)] == 1) {
        const auto look = [&](int j) {
            const Vec3D vecStepIJ = m_vecPoint[size_t(i)] - m_vecPoint[size_t(j)];
            if (isNeighbour(i, j) && isNearWhole(m_solver.solve(vecStepIJ), m_fThreshold))
                vecStep.push_back(j);
        };
        for (int j = i - 1; j >= m_vecBegin[size_t(i)]; --j)
            look(j);
        for (int j = i + 1; j < m_vecEnd[size_t(i)]; ++j)
            look(j);
    }
    IndexSum sum;
    for (int j : vecStep)
        if (m_vecIndexed[size_t(j)])
            addNeighbour(i, j, sum);
    if (m_vecTried[size_t(i)] == 1) {
        if (m_nKept + vecStep.size() <= nMaxKept) {
            m_nKept += vecStep.size();
            vecStep.shrink_to_fit();
            m_vecTried[size_t(i)] = 2;
        } else {
            std::vector<int>().swap(vecStep);
        }
    }
    return sum;
}

bool CIndexSpreading::pass(int& nIndexed, CRunReport& report)
{
    nIndexed = 0;
    for (int i = 0; i < m_nCount; ++i) {
        if (i % 100 == 0 || i == m_nCount - 1) {
            report.setProgress(i / 100);
            if (!report.goOn())
                return false;
        }
        const size_t n = size_t(i);
        if (m_vecIndexed[n])
            continue;
        const IndexSum sum = m_vecTried[n] ? sumOfWholeSteps(i) : sumOfIndexedNeighbours(i);
        // Every weight is above 0, so a weight of 0 means that no neighbour counted.
        const Vec3D vecHKL = sum.fWeight > 0 ? Vec3D{sum.vecHKL.x / sum.fWeight, sum.vecHKL.y / sum.fWeight,
                                                     sum.vecHKL.z / sum.fWeight}
                                             : m_solver.solve(m_vecPoint[n]);
        m_vecHKL[n] = vecHKL;
        if (isNearWhole(vecHKL, m_fThreshold)) {
            m_vecIndexed[n] = 1;
            m_vecRounded[n] = {float(roundedIndex(double(vecHKL.x))), float(roundedIndex(double(vecHKL.y))),
                               float(roundedIndex(double(vecHKL.z)))};
            m_vecX[n] = m_vecPoint[n].x;
            m_vecY[n] = m_vecPoint[n].y;
            m_vecZ[n] = m_vecPoint[n].z;
            m_nIndexedEnd = std::max(m_nIndexedEnd, i + 1);
            ++nIndexed;
        } else if (!m_vecTried[n]) {
            m_vecTried[n] = 1;
        }
    }
    return true;
}

}  // namespace

bool indexReflections(QList<Peak3D>& listPeak, const QList<Vec3D>& listBasis, float fThreshold, float fRadius,
                      CRunReport& report)
{
    if (listBasis.size() < 3)
        return true;
    CBasisSolver solver;
    solver.setBasis(listBasis[0], listBasis[1], listBasis[2]);
    if (!solver.isValid())
        return true;
    QList<Peak3D> listSorted = listPeak;
    sortByDStar(listSorted);
    CIndexSpreading spreading(listSorted, solver, fThreshold, fRadius);
    report.startProgress(QStringLiteral("%p%"), 0, (listSorted.size() - 1) / 100);
    int nIndexed = 0;
    do {
        if (!spreading.pass(nIndexed, report)) {
            report.endProgress();
            return false;
        }
    } while (nIndexed > 0);
    report.endProgress();
    for (int n = 0; n < listSorted.size(); ++n) {
        const Vec3D& vecHKL = spreading.indices()[size_t(n)];
        listSorted[n].setHKL(double(vecHKL.x), double(vecHKL.y), double(vecHKL.z));
    }
    listPeak = listSorted;
    return true;
}
