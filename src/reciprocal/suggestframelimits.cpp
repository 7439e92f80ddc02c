#include "reciprocal/suggestframelimits.h"

#include "geometry/rotationgeometry.h"
#include "reciprocal/mapping.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfRoundingStep = 0.01;  // Å⁻¹: the two decimals of the page

double farthestCorner(const DataSet& dataSet, const MappingParameters& mapping, const QSize& size)
{
    const BeamCentres centres = beamCentres(dataSet);
    const CPlaceCorrection correction = placeCorrection(dataSet, mapping.m_bApplyStretching);
    double dfFarthest = 0;
    for (int nFrame = 0; nFrame < dataSet.m_listShift.size(); ++nFrame) {
        const QPointF ptCentre = frameCentre(centres, nFrame);
        for (const QPointF& ptCorner : {QPointF(0, 0), QPointF(size.width(), 0), QPointF(0, size.height()),
                                        QPointF(size.width(), size.height())}) {
            const QPointF pt = correction.undone(ptCorner - ptCentre);
            dfFarthest = std::max(dfFarthest, std::hypot(pt.x(), pt.y()));
        }
    }
    return dfFarthest;
}

}  // namespace

double dStarOfFarthestCorner(const DataSet& dataSet, const MappingParameters& mapping, const QSize& size)
{
    if (size.isEmpty() || !(dataSet.m_dfPixelSize > 0) || !(dataSet.m_dfWavelength > 0)) {
        return 0;
    }
    const double dfFlat = farthestCorner(dataSet, mapping, size) * dataSet.m_dfPixelSize;
    return double(length(ewaldPoint({float(dfFlat), 0, 0}, dataSet.m_dfWavelength)));
}

Suggestion suggestFrameLimits(const DataSet& dataSet, const MappingParameters& mapping, const QSize& size)
{
    Suggestion suggestion;
    const double dfDStar = dStarOfFarthestCorner(dataSet, mapping, size);
    if (dfDStar > 0) {
        suggestion.append(suggestedValue(
            &MappingParameters::m_dfResolutionMax, g_dfRoundingStep * std::ceil(dfDStar / g_dfRoundingStep),
            QStringLiteral("the frames reach to %1 Å⁻¹ in their farthest corner").arg(dfDStar, 0, 'f', 3)));
    }
    double dfWeakest = 0, dfStrongest = 0;
    for (const QList<Peak3D>& listPeak : dataSet.m_listPeakFrame) {
        for (const Peak3D& peak : listPeak) {
            dfWeakest = std::min(dfWeakest, peak.dfIPoint);
            dfStrongest = std::max(dfStrongest, peak.dfIPoint);
        }
    }
    if (dfStrongest > 0) {
        suggestion.append(suggestedValue(&MappingParameters::m_dfIntensityMin, std::floor(dfWeakest),
                                         dfWeakest < 0
                                             ? QStringLiteral("the weakest peak has %1").arg(dfWeakest)
                                             : QStringLiteral("no peak is weaker")));
        suggestion.append(suggestedValue(&MappingParameters::m_dfIntensityMax, std::ceil(dfStrongest),
                                         QStringLiteral("the strongest peak has %1").arg(dfStrongest)));
    }
    return suggestion;
}

}  // namespace tessera
