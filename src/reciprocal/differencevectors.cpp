#include "reciprocal/differencevectors.h"

#include "reciprocal/bydstar.h"
#include "records/progress.h"

#include <cstddef>
#include <cstdint>
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
struct Selection {
    std::vector<int> vecRank;        ///< per reflection, 0 the strongest; equal intensities share a rank
    std::vector<int64_t> vecOffset;  ///< per rank, where its first vector goes in the sorted list
    bool bCut = false;               ///< more vectors than may stay
    int64_t nCount = 0;              ///< vectors that stay
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

/// Returns false when the run was stopped.
bool selectStrongest(const QList<Peak3D>& listPeak, const Limits& limits, Selection& selection,
                     CRunReport& report)
{
    const int nPeaks = listPeak.size();
    std::vector<int> vecByIntensity(static_cast<size_t>(nPeaks));
    for (int n = 0; n < nPeaks; ++n) {
        vecByIntensity[n] = n;
    }
    std::stable_sort(vecByIntensity.begin(), vecByIntensity.end(), [&](int nA, int nB) {
        return numbersDescending(listPeak[nA].dfIPoint, listPeak[nB].dfIPoint);
    });
    selection.vecRank.assign(size_t(nPeaks), 0);
    std::vector<float> vecX, vecY, vecZ;
    int nRank = -1;
    int64_t nRankCount = 0;
    const auto closeRank = [&] {
        selection.vecOffset.push_back(selection.nCount);
        selection.nCount += nRankCount;
        nRankCount = 0;
        selection.bCut = selection.nCount > g_nMaxVectors;
    };
    for (int n = 0; n < nPeaks; ++n) {
        if (n % 100 == 0 || n == nPeaks - 1) {
            report.setProgress(n / 100);
            if (!report.goOn()) {
                return false;
            }
        }
        const int nPeak = vecByIntensity[n];
        const bool bNewRank = n == 0 || numbersDescending(listPeak[vecByIntensity[n - 1]].dfIPoint,
                                                          listPeak[nPeak].dfIPoint);
        if (bNewRank) {
            if (n > 0) {
                closeRank();
            }
            ++nRank;
        }
        selection.vecRank[nPeak] = nRank;
        if (selection.bCut) {
            continue;  // weaker than all that stay
        }
        const Vec3D vecPoint = listPeak[nPeak].point();
        nRankCount += 2 * countInRange(vecX, vecY, vecZ, vecX.size(), vecPoint, limits);
        vecX.push_back(vecPoint.x);
        vecY.push_back(vecPoint.y);
        vecZ.push_back(vecPoint.z);
    }
    closeRank();
    selection.nCount = std::min(selection.nCount, g_nMaxVectors);
    return true;
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
    CProgress progress(report, QStringLiteral("%p%"), 0, (nPeaks - 1) / 100, ProgressPlace::TaskBarToo);
    Selection selection;
    if (!selectStrongest(listPeak, limits, selection, report)) {
        return {};
    }

    // Second walk, over the pairs in their order: a vector goes to the end of its rank, or, when all stay,
    // to the end of the list.
    std::vector<DifferenceVector> vecVector(static_cast<size_t>(selection.nCount));
    std::vector<int> vecStrong;
    for (int n = 0; n < nPeaks; ++n) {
        if (!selection.bCut || (size_t(selection.vecRank[n]) < selection.vecOffset.size() &&
                                selection.vecOffset[size_t(selection.vecRank[n])] < g_nMaxVectors)) {
            vecStrong.push_back(n);
        }
    }
    std::vector<Vec3D> vecPoint;
    vecPoint.reserve(vecStrong.size());
    for (int nPeak : vecStrong) {
        vecPoint.push_back(listPeak[nPeak].point());
    }
    int64_t nEnd = 0;
    int64_t nFilled = 0;
    for (size_t i = 0; i < vecStrong.size() && nFilled < selection.nCount; ++i) {
        const int nRankI = selection.vecRank[size_t(vecStrong[i])];
        if (i % 1000 == 0 && !report.goOn()) {
            return {};
        }
        for (size_t j = i + 1; j < vecStrong.size(); ++j) {
            const Vec3D v = vecPoint[i] - vecPoint[j];
            const float fSquare = squaredLength(v);
            if (!limits.contain(fSquare)) {
                continue;
            }
            const size_t nRank = size_t(std::max(nRankI, selection.vecRank[size_t(vecStrong[j])]));
            int64_t& nPlace = selection.bCut ? selection.vecOffset[nRank] : nEnd;
            const double dfWeight = weakerIntensity(listPeak[vecStrong[i]].dfIPoint,
                                                    listPeak[vecStrong[j]].dfIPoint);
            for (const Vec3D& vecSigned : {v, -v}) {
                if (nPlace >= selection.nCount) {
                    break;
                }
                vecVector[nPlace++] = {vecSigned, double(std::sqrt(fSquare)), dfWeight};
                ++nFilled;
            }
        }
    }
    progress.end();
    return vecVector;
}

}  // namespace tessera
