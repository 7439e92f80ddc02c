#include "reciprocal/suggestlimits.h"

#include "geometry/rotationgeometry.h"

#include <cmath>
#include <vector>

namespace tessera {

namespace {

const int g_nFree = 3;                // pixels without peaks, behind those of the direct beam
const double g_dfPeaksOfABeam = 1.2;  // per frame: a good beam makes one
const double g_dfStray = 0.02;        // peaks per frame that a free pixel may still have
const double g_dfBeforeNext =
    0.75;  // of the closest distance between spots: the beam's peaks end before the first reflections

// The number of peaks, over all frames, by their distance from the direct beam in whole pixels.
std::vector<int> countsByDistance(const DataSet& dataSet, int nMost)
{
    const BeamCentres centres = {dataSet.m_listShift, dataSet.m_dfCenterX, dataSet.m_dfCenterY};
    std::vector<int> vecCount(static_cast<size_t>(nMost));
    for (int n = 0; n < dataSet.m_listPeakFrame.size(); ++n) {
        const QPointF ptBeam = frameCentre(centres, n);
        for (const Peak3D& peak : dataSet.m_listPeakFrame[n]) {
            const double df = std::hypot(peak.dfX2D - ptBeam.x(), peak.dfY2D - ptBeam.y());
            if (df < nMost) {
                ++vecCount[size_t(df)];
            }
        }
    }
    return vecCount;
}

}  // namespace

double radiusOfBeamPeaks(const DataSet& dataSet, double dfClosest)
{
    const int nMost = 1000;  // pixels; no beam is as wide
    const double dfLimit = g_dfBeforeNext * dfClosest;
    if (!(dfLimit > 1 && dfLimit + g_nFree + 1 < nMost)) {
        return 0;
    }
    const std::vector<int> vecCount = countsByDistance(dataSet, int(dfLimit) + g_nFree + 1);
    const double dfFrames = dataSet.m_listPeakFrame.size();
    int nHeap = 0;
    for (size_t n = 0; double(n) <= dfLimit; ++n) {
        int nBeyond = 0;
        for (size_t i = n; i < n + g_nFree; ++i) {
            nBeyond += vecCount[i];
        }
        if (nHeap > 0 && nBeyond <= g_dfStray * dfFrames) {
            return nHeap >= g_dfPeaksOfABeam * dfFrames ? double(n) : 0;
        }
        nHeap += vecCount[n];
    }
    return 0;
}

Suggestion suggestLimits(const DataSet& dataSet, double dfClosest)
{
    const double dfRadius = radiusOfBeamPeaks(dataSet, dfClosest);
    if (!(dfRadius > 0)) {
        return {};
    }
    // Rounded up to the decimals of the page, if that is still below the first reflections.
    const double dfDStar = dfRadius * dataSet.m_dfPixelSize;
    const double dfUp = std::ceil(100 * dfDStar) / 100;
    return {{&MappingParameters::m_dfResolutionMin,
             dfUp < g_dfBeforeNext * dfClosest * dataSet.m_dfPixelSize ? dfUp : dfDStar,
             QStringLiteral("peaks up to %1 pixels from the direct beam belong to the beam itself")
                 .arg(dfRadius)}};
}

}  // namespace tessera
