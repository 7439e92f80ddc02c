#include "reciprocal/differencevectors.h"

#include "reciprocal/bydstar.h"
#include "records/progress.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>
#include <vector>

namespace tessera {

namespace {

constexpr int64_t g_nMaxVectors = 300000;

double weakerIntensity(double dfA, double dfB)
{
    if (std::isnan(dfA) || std::isnan(dfB)) {
        return std::nan("");
    }
    return std::min(dfA, dfB);
}

struct Limits {
    float fMaxSquare;
    float fMinSquare;
    bool contain(float fSquare) const { return fMaxSquare >= fSquare && fSquare >= fMinSquare; }
};

/// Which vectors stay, found without storing any.
///
/// A vector is as strong as the weaker of its two reflections, so with the reflections ranked by intensity
/// the weights of all vectors are known by rank alone. The ranks are walked from the strongest on until
/// they hold more vectors than may stay; weaker reflections are never looked at.
struct RankedVectors {
    std::vector<int> vecRank;        ///< per reflection, 0 the strongest; equal intensities share a rank
    std::vector<int64_t> vecOffset;  ///< per rank, where its first vector goes in the sorted list
    bool bCut = false;               ///< more vectors than may stay
    int64_t nCount = 0;              ///< vectors that stay

    void closeRank(int64_t nOfRank)
    {
        vecOffset.push_back(nCount);
        nCount += nOfRank;
        bCut = nCount > g_nMaxVectors;
    }
    /// Whether any vector of a reflection may stay.
    bool isStrong(int nReflection) const
    {
        const size_t nRank = size_t(vecRank[nReflection]);
        return !bCut || (nRank < vecOffset.size() && vecOffset[nRank] < g_nMaxVectors);
    }
};

/// Counts, among the first nCount places of the arrays, the points at a distance within the limits.
int64_t countInRange(const std::vector<float>& vecX, const std::vector<float>& vecY,
                     const std::vector<float>& vecZ, size_t nCount, const Vec3D& vecPoint,
                     const Limits& limits)
{
    int64_t nFound = 0;
    for (size_t n = 0; n < nCount; ++n) {
        const float fX = vecPoint.x - vecX[n];
        const float fY = vecPoint.y - vecY[n];
        const float fZ = vecPoint.z - vecZ[n];
        const float fSquare = fX * fX + fY * fY + fZ * fZ;
        nFound += int(limits.fMaxSquare >= fSquare) & int(fSquare >= limits.fMinSquare);
    }
    return nFound;
}

/// The reflections, strongest first, in the order of the list among equals.
std::vector<int> reflectionsByIntensity(const QList<Peak3D>& listPeak)
{
    std::vector<int> vecByIntensity(static_cast<size_t>(listPeak.size()));
    std::iota(vecByIntensity.begin(), vecByIntensity.end(), 0);
    std::stable_sort(vecByIntensity.begin(), vecByIntensity.end(), [&](int nA, int nB) {
        return numbersDescending(listPeak[nA].dfIPoint, listPeak[nB].dfIPoint);
    });
    return vecByIntensity;
}

/// None when the run was stopped.
std::optional<RankedVectors> rankVectors(const QList<Peak3D>& listPeak, const Limits& limits,
                                         CRunReport& report)
{
    const int nPeaks = listPeak.size();
    const std::vector<int> vecByIntensity = reflectionsByIntensity(listPeak);
    RankedVectors ranked;
    ranked.vecRank.assign(size_t(nPeaks), 0);
    std::vector<float> vecX, vecY, vecZ;
    int nRank = 0;
    int64_t nOfRank = 0;
    for (int n = 0; n < nPeaks; ++n) {
        if (n % 100 == 0 || n == nPeaks - 1) {
            report.setProgress(n / 100);
            if (!report.goOn()) {
                return std::nullopt;
            }
        }
        const int nPeak = vecByIntensity[n];
        if (n > 0 && numbersDescending(listPeak[vecByIntensity[n - 1]].dfIPoint, listPeak[nPeak].dfIPoint)) {
            ranked.closeRank(nOfRank);
            nOfRank = 0;
            ++nRank;
        }
        ranked.vecRank[nPeak] = nRank;
        if (ranked.bCut) {
            continue;  // weaker than all that stay
        }
        const Vec3D vecPoint = listPeak[nPeak].point();
        nOfRank += 2 * countInRange(vecX, vecY, vecZ, vecX.size(), vecPoint, limits);
        vecX.push_back(vecPoint.x);
        vecY.push_back(vecPoint.y);
        vecZ.push_back(vecPoint.z);
    }
    ranked.closeRank(nOfRank);
    ranked.nCount = std::min(ranked.nCount, g_nMaxVectors);
    return ranked;
}

/// Walks the pairs in their order: a vector goes to the end of its rank, or, when all stay, to the end of the
/// list. Empty when the run was stopped.
std::vector<DifferenceVector> vectorsOf(const QList<Peak3D>& listPeak, const Limits& limits,
                                        RankedVectors ranked, CRunReport& report)
{
    std::vector<int> vecStrong;
    std::vector<Vec3D> vecPoint;
    for (int n = 0; n < listPeak.size(); ++n) {
        if (ranked.isStrong(n)) {
            vecStrong.push_back(n);
            vecPoint.push_back(listPeak[n].point());
        }
    }
    std::vector<DifferenceVector> vecVector(static_cast<size_t>(ranked.nCount));
    int64_t nEnd = 0;
    int64_t nFilled = 0;
    for (size_t i = 0; i < vecStrong.size() && nFilled < ranked.nCount; ++i) {
        const int nRankI = ranked.vecRank[vecStrong[i]];
        if (i % 1000 == 0 && !report.goOn()) {
            return {};
        }
        for (size_t j = i + 1; j < vecStrong.size(); ++j) {
            const Vec3D v = vecPoint[i] - vecPoint[j];
            const float fSquare = squaredLength(v);
            if (!limits.contain(fSquare)) {
                continue;
            }
            const int nRank = std::max(nRankI, ranked.vecRank[vecStrong[j]]);
            int64_t& nPlace = ranked.bCut ? ranked.vecOffset[nRank] : nEnd;
            const double dfWeight = weakerIntensity(listPeak[vecStrong[i]].dfIPoint,
                                                    listPeak[vecStrong[j]].dfIPoint);
            for (const Vec3D& vecSigned : {v, -v}) {
                if (nPlace >= ranked.nCount) {
                    break;
                }
                vecVector[nPlace++] = {vecSigned, double(std::sqrt(fSquare)), dfWeight};
                ++nFilled;
            }
        }
    }
    return vecVector;
}

}  // namespace

std::vector<DifferenceVector> calDifferenceVectors(const QList<Peak3D>& listPeak, float fMaxLength,
                                                   float fMinLength, CRunReport& report)
{
    const int nPeaks = listPeak.size();
    if (nPeaks < 2) {
        return {};
    }
    const Limits limits = {fMaxLength * fMaxLength, fMinLength * fMinLength};
    const CProgress progress(report, QStringLiteral("%p%"), 0, (nPeaks - 1) / 100, ProgressPlace::TaskBarToo);
    const std::optional<RankedVectors> ranked = rankVectors(listPeak, limits, report);
    if (!ranked) {
        return {};
    }
    return vectorsOf(listPeak, limits, *ranked, report);
}

}  // namespace tessera
