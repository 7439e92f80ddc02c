#include "crystal/peakpairs.h"

#include "crystal/reflectionindices.h"
#include "records/progress.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// The places on a frame of the peaks that a pair may be made of.
std::vector<int> usablePeaks(const QList<Peak3D>& listPeak, const CSpaceGroup& spaceGroup)
{
    std::vector<int> vecUsable;
    for (int n = 0; n < listPeak.size(); ++n) {
        const Peak3D& peak = listPeak[n];
        const int h = roundIndex(peak.dfH), k = roundIndex(peak.dfK), l = roundIndex(peak.dfL);
        if ((h != 0 || k != 0 || l != 0) && !spaceGroup.isAbsent(h, k, l)) {
            vecUsable.push_back(n);
        }
    }
    return vecUsable;
}

}  // namespace

QVector<QList<Peak3D>> selectPeaksByIntensity(const QVector<QList<Peak3D>>& vecPeak, double dfLow,
                                              double dfHigh)
{
    if (dfLow > dfHigh) {
        std::swap(dfLow, dfHigh);
    }
    QVector<QList<Peak3D>> vecSelected;
    vecSelected.reserve(vecPeak.size());
    for (const QList<Peak3D>& listPeak : vecPeak) {
        QList<Peak3D> listKept;
        for (const Peak3D& peak : listPeak) {
            if (peak.dfIPoint >= dfLow && peak.dfIPoint <= dfHigh) {
                listKept.append(peak);
            }
        }
        vecSelected.append(listKept);
    }
    return vecSelected;
}

std::optional<std::vector<PeakPairPlace>> peakPairPlaces(const QVector<QList<Peak3D>>& vecPeak,
                                                         const PeakPairLimits& limits,
                                                         const CSpaceGroup& spaceGroup, CRunReport& report)
{
    const double dfLow = std::min(limits.dfDStarLow, limits.dfDStarHigh);
    const double dfHigh = std::max(limits.dfDStarLow, limits.dfDStarHigh);
    std::vector<PeakPairPlace> vecPair;
    bool bStopped = false;
    CProgress progress(report, QStringLiteral("%v/%m"), 0, vecPeak.size());
    for (int nList = 0; nList < vecPeak.size() && !bStopped; ++nList) {
        progress.set(nList + 1);
        bStopped = !report.goOn();
        const QList<Peak3D>& listPeak = vecPeak[nList];
        const std::vector<int> vecUsable = usablePeaks(listPeak, spaceGroup);
        for (std::size_t i = 0; i < vecUsable.size() && !bStopped; ++i) {
            const Peak3D& a = listPeak[vecUsable[i]];
            for (std::size_t j = i + 1; j < vecUsable.size(); ++j) {
                const Peak3D& b = listPeak[vecUsable[j]];
                const double dfX = a.dfX2D - b.dfX2D, dfY = a.dfY2D - b.dfY2D;
                const double dfDStar = std::sqrt(dfX * dfX + dfY * dfY) * limits.dfPixelSize;
                if (dfDStar >= dfLow && dfDStar <= dfHigh) {
                    vecPair.push_back({nList, vecUsable[i], vecUsable[j]});
                }
            }
        }
    }
    progress.end();
    if (bStopped) {
        return {};
    }
    return vecPair;
}

QVector<QList<PeakPair>> buildPeakPairs(const QVector<QList<Peak3D>>& vecPeak, const PeakPairLimits& limits,
                                        const CSpaceGroup& spaceGroup, CRunReport& report)
{
    const std::optional<std::vector<PeakPairPlace>> vecPlace = peakPairPlaces(vecPeak, limits, spaceGroup,
                                                                              report);
    QVector<QList<PeakPair>> vecPair;
    if (!vecPlace) {
        return vecPair;
    }
    auto it = vecPlace->begin();
    for (int nList = 0; nList < vecPeak.size(); ++nList) {
        if (vecPeak[nList].size() < 2) {
            continue;
        }
        QList<PeakPair> listPair;
        for (; it != vecPlace->end() && it->nList == nList; ++it) {
            listPair.append({vecPeak[nList][it->nFirst], vecPeak[nList][it->nSecond]});
        }
        vecPair.append(listPair);
    }
    return vecPair;
}

}  // namespace tessera
