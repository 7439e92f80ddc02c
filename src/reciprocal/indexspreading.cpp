#include "reciprocal/indexspreading.h"

#include "crystal/reflectionindices.h"
#include "reciprocal/basissolver.h"
#include "reciprocal/bydstar.h"
#include "reciprocal/lanes.h"
#include "reciprocal/lengthwindow.h"
#include "records/progress.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
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

/// Steps from neighbours to the reflection at hand, solved side by side.
struct StepBlock {
    static constexpr int nMost = 64;
    float afX[nMost] = {}, afY[nMost] = {}, afZ[nMost] = {};  ///< the step, Å⁻¹
    float aafIndex[3][nMost] = {};                            ///< its fractional indices
    float afWeight[nMost] = {};                               ///< falls with its length
    int32_t anWhole[nMost] = {};  ///< 1: all indices are near whole numbers; 0: not
    int32_t anLarge[nMost] = {};  ///< 1: too large an index for the fast test
};

/// Fills the block behind the first nSteps steps. Each operation rounds as in CBasisSolver::solve() and
/// isNearWhole().
TESSERA_WIDE_LANES void solveSteps(StepBlock& block, int nSteps, const double* pdfCofactor,
                                   double dfDeterminant, float fThreshold)
{
    for (int nFirst = 0; nFirst < nSteps; nFirst += g_nLanes) {
        const float* pfX = block.afX + nFirst;
        const float* pfY = block.afY + nFirst;
        const float* pfZ = block.afZ + nFirst;
        int32_t anWhole[g_nLanes], anLarge[g_nLanes];
        for (int n = 0; n < g_nLanes; ++n) {
            anWhole[n] = 1;
            anLarge[n] = 0;
        }
        for (int nIndex = 0; nIndex < 3; ++nIndex) {
            const double dfA = pdfCofactor[3 * nIndex];
            const double dfB = pdfCofactor[3 * nIndex + 1];
            const double dfC = pdfCofactor[3 * nIndex + 2];
            float* pfIndex = block.aafIndex[nIndex] + nFirst;
            // One loop for each kind of number, which all compilers make vector instructions of.
            double adfIndex[g_nLanes];
            for (int n = 0; n < g_nLanes; ++n) {
                adfIndex[n] = (double(pfX[n]) * dfA + double(pfY[n]) * dfB + double(pfZ[n]) * dfC) /
                              dfDeterminant;
            }
            for (int n = 0; n < g_nLanes; ++n) {
                pfIndex[n] = float(adfIndex[n]);
            }
            double adfValue[g_nLanes], adfHalf[g_nLanes], adfSmall[g_nLanes];
            for (int n = 0; n < g_nLanes; ++n) {
                adfValue[n] = double(pfIndex[n]);
            }
            for (int n = 0; n < g_nLanes; ++n) {
                adfHalf[n] = adfValue[n] < 0 ? -0.5 : 0.5;
            }
            int anSmall[g_nLanes];
            for (int n = 0; n < g_nLanes; ++n) {
                anSmall[n] = int(pfIndex[n] < 1e9f) & int(pfIndex[n] > -1e9f);
            }
            for (int n = 0; n < g_nLanes; ++n) {
                adfSmall[n] = anSmall[n] ? adfValue[n] : 0.0;
            }
            float afOff[g_nLanes];
            for (int n = 0; n < g_nLanes; ++n) {
                const double dfRounded = double(int32_t(adfSmall[n] + adfHalf[n]));
                afOff[n] = float(adfValue[n] - dfRounded);
            }
            for (int n = 0; n < g_nLanes; ++n) {
                anWhole[n] &= int(afOff[n] <= fThreshold) & int(afOff[n] >= -fThreshold);
                anLarge[n] |= 1 - anSmall[n];
            }
        }
        for (int n = 0; n < g_nLanes; ++n) {
            block.anWhole[nFirst + n] = anWhole[n];
            block.anLarge[nFirst + n] = anLarge[n];
        }
        float afLength[g_nLanes];
        for (int n = 0; n < g_nLanes; ++n) {
            afLength[n] = std::sqrt(pfX[n] * pfX[n] + pfY[n] * pfY[n] + pfZ[n] * pfZ[n]);
        }
        for (int n = 0; n < g_nLanes; ++n) {
            block.afWeight[nFirst + n] = float(1 / (double(afLength[n]) + 0.001));
        }
    }
}

/// The indexed reflections, in the order in which they came; ascending during the first pass. In columns, as
/// the search for neighbours goes through all of them.
struct IndexedReflections {
    std::vector<int> vecNumber;           ///< of the reflection, in order of d*
    std::vector<float> vecX, vecY, vecZ;  ///< its point
    std::vector<Vec3D> vecRounded;        ///< its whole indices

    size_t size() const { return vecNumber.size(); }
    void add(int nNumber, const Vec3D& vecPoint, const Vec3D& vecHKL)
    {
        vecNumber.push_back(nNumber);
        vecX.push_back(vecPoint.x);
        vecY.push_back(vecPoint.y);
        vecZ.push_back(vecPoint.z);
        vecRounded.push_back({float(roundedIndex(double(vecHKL.x))), float(roundedIndex(double(vecHKL.y))),
                              float(roundedIndex(double(vecHKL.z)))});
    }
};

/// A step from an indexed neighbour that is whole within the threshold.
struct WholeStep {
    int nPlace = 0;  ///< of the neighbour, among the indexed ones
    Vec3D vecFraction;
    float fWeight = 0;
};

/// A reflection on its way to its indices.
struct Reflection {
    Vec3D vecPoint;
    int nBegin = 0, nEnd = 0;  ///< the reflections whose d* is near enough for neighbours
    Vec3D vecHKL;
    bool bTried = false;
    bool bIndexed = false;
    size_t nSeen = 0;  ///< how many indexed ones there were when it failed the last time
};

/// The places of the neighbours with whole steps, of reflections that failed, as long as there is room.
class CFailedSteps {
public:
    explicit CFailedSteps(size_t nReflections) : m_vecPlaces(nReflections) {}

    /// None where there was no room.
    const std::optional<std::vector<int>>& places(int nReflection) const { return m_vecPlaces[nReflection]; }

    void keep(int nReflection, const std::vector<WholeStep>& vecStep)
    {
        constexpr size_t nMaxEntries = 50000000;  // 200 MB
        drop(nReflection);
        if (m_nEntries + vecStep.size() > nMaxEntries) {
            return;
        }
        std::vector<int>& vecPlace = m_vecPlaces[nReflection].emplace();
        vecPlace.reserve(vecStep.size());
        for (const WholeStep& step : vecStep) {
            vecPlace.push_back(step.nPlace);
        }
        m_nEntries += vecStep.size();
    }

    void drop(int nReflection)
    {
        std::optional<std::vector<int>>& places = m_vecPlaces[nReflection];
        m_nEntries -= places ? places->size() : 0;
        places.reset();
    }

private:
    std::vector<std::optional<std::vector<int>>> m_vecPlaces;
    size_t m_nEntries = 0;
};

/// One spreading, with the reflections in order of d*.
///
/// A reflection that failed is looked at again only as far as others have been indexed since: if none of them
/// is a neighbour with a whole step, its sums are what they were. Otherwise the sums are formed anew, over
/// all its neighbours with whole steps and in the order of the walk, as single precision asks for.
class CIndexSpreading {
public:
    CIndexSpreading(const QList<Peak3D>& listSorted, const CBasisSolver& solver, float fThreshold,
                    float fRadius);

    /// One pass over all reflections. @return how many were indexed in it, none when the run was stopped
    std::optional<int> pass(CRunReport& report);
    const Vec3D& indices(int nReflection) const { return m_vecReflection[nReflection].vecHKL; }

private:
    /// The places of the neighbours among the indexed ones from nFirst on, the last one first.
    std::vector<int> neighbours(const Reflection& reflection, size_t nFirst) const;
    /// Those of the steps from the indexed ones at some places that are whole.
    std::vector<WholeStep> wholeSteps(const Reflection& reflection, const std::vector<int>& vecPlace) const;
    /// Where to begin among the indexed ones in the first pass, in which they stand in order of d*.
    size_t firstInWindow(const Reflection& reflection) const;
    /// The places of some steps and of what is kept of a reflection that failed, in the order of the walk
    /// from it: inwards, then outwards.
    std::vector<int> placesInWalkOrder(int nReflection, const std::vector<WholeStep>& vecStep) const;
    /// The mean of the indices given by the steps to neighbours; without any steps, the plain quotient is
    /// used.
    Vec3D weightedIndices(const Reflection& reflection, const std::vector<WholeStep>& vecStep) const;
    /// Forms the indices, unless nothing has changed since they failed. False if it is not indexed.
    bool index(int nReflection);

    const CBasisSolver& m_solver;
    const float m_fThreshold;
    const float m_fRadiusSquare;
    std::vector<Reflection> m_vecReflection;
    IndexedReflections m_indexed;
    CFailedSteps m_failed;
};

CIndexSpreading::CIndexSpreading(const QList<Peak3D>& listSorted, const CBasisSolver& solver,
                                 float fThreshold, float fRadius)
    : m_solver(solver),
      m_fThreshold(fThreshold),
      m_fRadiusSquare(fRadius * fRadius),
      m_vecReflection(size_t(listSorted.size())),
      m_failed(size_t(listSorted.size()))
{
    std::vector<double> vecDStar;
    vecDStar.reserve(m_vecReflection.size());
    for (const Peak3D& peak : listSorted) {
        vecDStar.push_back(peak.dfDStar);
    }
    const LengthWindow window = windowOnLengths(vecDStar, double(fRadius));
    for (int n = 0; n < listSorted.size(); ++n) {
        m_vecReflection[n].vecPoint = listSorted[n].point();
        // Record 0 is no neighbour of a reflection behind it.
        m_vecReflection[n].nBegin = std::min(std::max(window.vecBegin[n], 1), n);
        m_vecReflection[n].nEnd = window.vecEnd[n];
    }
}

std::vector<int> CIndexSpreading::neighbours(const Reflection& reflection, size_t nFirst) const
{
    const Vec3D vecPoint = reflection.vecPoint;
    std::vector<int> vecPlace(m_indexed.size() - std::min(nFirst, m_indexed.size()));
    int* pNext = vecPlace.data();
    for (size_t nPlace = m_indexed.size(); nPlace-- > nFirst;) {
        const float fDX = vecPoint.x - m_indexed.vecX[nPlace];
        const float fDY = vecPoint.y - m_indexed.vecY[nPlace];
        const float fDZ = vecPoint.z - m_indexed.vecZ[nPlace];
        *pNext = int(nPlace);  // the next one overwrites it if it is too far; no branch
        pNext += fDX * fDX + fDY * fDY + fDZ * fDZ <= m_fRadiusSquare;
    }
    const auto isOutside = [&](int nPlace) {
        const int nNumber = m_indexed.vecNumber[nPlace];
        return nNumber < reflection.nBegin || nNumber >= reflection.nEnd;
    };
    vecPlace.resize(size_t(std::remove_if(vecPlace.data(), pNext, isOutside) - vecPlace.data()));
    return vecPlace;
}

std::vector<WholeStep> CIndexSpreading::wholeSteps(const Reflection& reflection,
                                                   const std::vector<int>& vecPlace) const
{
    const Vec3D vecPoint = reflection.vecPoint;
    std::vector<WholeStep> vecStep;
    vecStep.reserve(vecPlace.size());
    StepBlock block;
    for (size_t nFirst = 0; nFirst < vecPlace.size(); nFirst += StepBlock::nMost) {
        const int nSteps = int(std::min(vecPlace.size() - nFirst, size_t(StepBlock::nMost)));
        for (int n = 0; n < nSteps; ++n) {
            const int nPlace = vecPlace[nFirst + n];
            block.afX[n] = vecPoint.x - m_indexed.vecX[nPlace];
            block.afY[n] = vecPoint.y - m_indexed.vecY[nPlace];
            block.afZ[n] = vecPoint.z - m_indexed.vecZ[nPlace];
        }
        solveSteps(block, nSteps, m_solver.cofactors(), m_solver.determinant(), m_fThreshold);
        for (int n = 0; n < nSteps; ++n) {
            const Vec3D vecFraction = {block.aafIndex[0][n], block.aafIndex[1][n], block.aafIndex[2][n]};
            if (block.anLarge[n] ? isNearWhole(vecFraction, m_fThreshold) : block.anWhole[n] != 0) {
                vecStep.push_back({vecPlace[nFirst + n], vecFraction, block.afWeight[n]});
            }
        }
    }
    return vecStep;
}

size_t CIndexSpreading::firstInWindow(const Reflection& reflection) const
{
    const std::vector<int>& vecNumber = m_indexed.vecNumber;
    return size_t(std::lower_bound(vecNumber.begin(), vecNumber.end(), reflection.nBegin) -
                  vecNumber.begin());
}

std::vector<int> CIndexSpreading::placesInWalkOrder(int nReflection,
                                                    const std::vector<WholeStep>& vecStep) const
{
    std::vector<int> vecPlace;
    vecPlace.reserve(vecStep.size());
    for (const WholeStep& step : vecStep) {
        vecPlace.push_back(step.nPlace);
    }
    if (const std::optional<std::vector<int>>& kept = m_failed.places(nReflection)) {
        vecPlace.insert(vecPlace.end(), kept->begin(), kept->end());
    }
    std::sort(vecPlace.begin(), vecPlace.end(), [&](int nA, int nB) {
        const int a = m_indexed.vecNumber[nA];
        const int b = m_indexed.vecNumber[nB];
        if ((a < nReflection) != (b < nReflection)) {
            return a < nReflection;
        }
        return a < nReflection ? a > b : a < b;
    });
    return vecPlace;
}

Vec3D CIndexSpreading::weightedIndices(const Reflection& reflection,
                                       const std::vector<WholeStep>& vecStep) const
{
    if (vecStep.empty()) {
        return m_solver.solve(reflection.vecPoint);
    }
    Vec3D vecSum;
    float fSum = 0;
    for (const WholeStep& step : vecStep) {
        vecSum = vecSum + scaled(step.vecFraction + m_indexed.vecRounded[step.nPlace], step.fWeight);
        fSum += step.fWeight;
    }
    return {vecSum.x / fSum, vecSum.y / fSum, vecSum.z / fSum};
}

bool CIndexSpreading::index(int nReflection)
{
    Reflection& reflection = m_vecReflection[nReflection];
    const bool bFirstTime = !reflection.bTried;
    reflection.bTried = true;
    const size_t nFirst = bFirstTime ? firstInWindow(reflection) : reflection.nSeen;
    std::vector<WholeStep> vecStep = wholeSteps(reflection, neighbours(reflection, nFirst));
    reflection.nSeen = m_indexed.size();
    if (!bFirstTime) {
        if (vecStep.empty()) {
            return false;
        }
        if (!m_failed.places(nReflection)) {
            vecStep = wholeSteps(reflection, neighbours(reflection, 0));
        }
        vecStep = wholeSteps(reflection, placesInWalkOrder(nReflection, vecStep));
    }
    reflection.vecHKL = weightedIndices(reflection, vecStep);
    if (!isNearWhole(reflection.vecHKL, m_fThreshold)) {
        m_failed.keep(nReflection, vecStep);
        return false;
    }
    reflection.bIndexed = true;
    m_failed.drop(nReflection);
    m_indexed.add(nReflection, reflection.vecPoint, reflection.vecHKL);
    return true;
}

std::optional<int> CIndexSpreading::pass(CRunReport& report)
{
    const int nCount = int(m_vecReflection.size());
    int nIndexed = 0;
    for (int n = 0; n < nCount; ++n) {
        if (n % 100 == 0 || n == nCount - 1) {
            report.setProgress(n / 100);
            if (!report.goOn()) {
                return std::nullopt;
            }
        }
        if (!m_vecReflection[n].bIndexed) {
            nIndexed += index(n);
        }
    }
    return nIndexed;
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
    std::optional<int> nIndexed;
    do {
        nIndexed = spreading.pass(report);
        if (!nIndexed) {
            return false;
        }
    } while (*nIndexed > 0);
    progress.end();
    for (int n = 0; n < listSorted.size(); ++n) {
        const Vec3D& vecHKL = spreading.indices(n);
        listSorted[n].setHKL(double(vecHKL.x), double(vecHKL.y), double(vecHKL.z));
    }
    listPeak = listSorted;
    return true;
}

}  // namespace tessera
