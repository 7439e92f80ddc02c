#include "reciprocal/suggestmerging.h"

#include "frames/seriessample.h"
#include "frames/spotdistance.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

const int g_nFramesLookedAt = 12;

SuggestedValue atMost(double PeakMergingParameters::*pMember, double dfLimit, double dfClosest)
{
    return suggestedValue(pMember, std::min(PeakMergingParameters().*pMember, dfLimit),
                          QStringLiteral("nine in ten peaks are %1 pixels or more from the next one")
                              .arg(dfClosest, 0, 'f', 1));
}

}  // namespace

double closestDistanceOfPeaks(const QList<QList<Peak3D>>& listPeakFrame)
{
    std::vector<std::vector<QPointF>> vecFrame;
    for (const int nFrame : sampledFrames(listPeakFrame.size(), g_nFramesLookedAt)) {
        QList<Peak3D> listPeak = listPeakFrame[nFrame];
        std::stable_sort(listPeak.begin(), listPeak.end(),
                         [](const Peak3D& a, const Peak3D& b) { return a.dfIPoint > b.dfIPoint; });
        std::vector<QPointF>& vecPeak = vecFrame.emplace_back();
        for (const Peak3D& peak : listPeak) {
            vecPeak.emplace_back(peak.dfX2D, peak.dfY2D);
        }
    }
    return closestDistance(vecFrame, 0);
}

Suggestion suggestMerging(double dfClosest)
{
    if (!(dfClosest > 0)) {
        return {};
    }
    const double dfHalfWay = 0.99 * dfClosest / 2;  // below it
    const double dfNextSpot = std::sqrt(dfClosest * dfClosest - dfHalfWay * dfHalfWay);
    return {atMost(&PeakMergingParameters::m_dfMin3DDistance, dfNextSpot, dfClosest),
            atMost(&PeakMergingParameters::m_dfMax2DDistance, dfHalfWay, dfClosest)};
}

}  // namespace tessera
