#include "reciprocal/resolutionrings.h"

#include "geometry/angles.h"
#include "reciprocal/framereading.h"
#include "reciprocal/mapping.h"

#include <QRectF>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nRingPoints = 240;      // a chord of a ring of 1000 pixels then leaves it by less than 0.1
const double g_dfInnermost = 0.12;  // of the last ring: labels of the others need room
const double g_dfNextToLast = 0.9;  // of the last ring

/// The greatest d* whose ring still touches the frame.
double farthestDStar(const DataSet& dataSet, bool bApplyStretching, int nFrame, const QRectF& rcFrame)
{
    const QPointF ptBeam = frameCentre(beamCentres(dataSet), nFrame);
    const double dfX = std::clamp(ptBeam.x(), rcFrame.left(), rcFrame.right());
    const double dfY = std::clamp(ptBeam.y(), rcFrame.top(), rcFrame.bottom());
    double dfFarthest = 0;
    for (const QPointF& pt : {QPointF(rcFrame.left(), dfY), QPointF(rcFrame.right(), dfY),
                              QPointF(dfX, rcFrame.top()), QPointF(dfX, rcFrame.bottom())}) {
        const auto reading = readFramePlace(dataSet, bApplyStretching, nFrame, pt);
        dfFarthest = std::max(dfFarthest, reading ? reading->dfDStar : 0.0);
    }
    return dfFarthest;
}

/// The place of a label: at the upper right if that is on the frame, away from the names of axes and beam.
std::optional<QPointF> placeOfText(const QPolygonF& polygon, const QRectF& rcFrame)
{
    const int nPoints = polygon.size() - 1;  // the last is the first
    for (int i = 0; i < nPoints; ++i) {
        // The points go clockwise on the screen from the right: the first try is an eighth of a turn back.
        const QPointF& pt = polygon[(i + nPoints * 7 / 8) % nPoints];
        if (rcFrame.contains(pt)) {
            return pt;
        }
    }
    return {};
}

}  // namespace

std::optional<double> flatRadius(double dfDStar, double dfWavelength)
{
    const double dfSine = dfDStar * dfWavelength / 2;
    if (!(dfWavelength > 0) || !(dfSine >= 0) || !(dfSine < std::sqrt(0.5))) {
        return {};
    }
    return std::tan(2 * std::asin(dfSine)) / dfWavelength;
}

std::vector<double> ringSpacings(double dfMaxDStar)
{
    std::vector<double> vecSpacing;
    if (!(dfMaxDStar > 0) || !std::isfinite(dfMaxDStar)) {
        return vecSpacing;
    }
    const int nHighest = int(std::floor(std::log10(1 / (g_dfInnermost * dfMaxDStar))));
    for (int nPower = nHighest; nPower >= nHighest - 2; --nPower) {
        for (const double dfFactor : {5.0, 2.0, 1.0}) {
            const double dfSpacing = dfFactor * std::pow(10.0, nPower);
            const double dfShare = 1 / (dfSpacing * dfMaxDStar);
            if (dfShare >= g_dfInnermost && dfShare <= g_dfNextToLast) {
                vecSpacing.push_back(dfSpacing);
            }
        }
    }
    vecSpacing.push_back(1 / dfMaxDStar);
    return vecSpacing;
}

std::vector<ResolutionRing> resolutionRings(const DataSet& dataSet, bool bApplyStretching, int nFrame,
                                            const QSize& sizeFrame, double dfLimit)
{
    std::vector<ResolutionRing> vecRing;
    if (sizeFrame.isEmpty() || !(dataSet.m_dfPixelSize > 0)) {
        return vecRing;
    }
    const QRectF rcFrame(-0.5, -0.5, sizeFrame.width(), sizeFrame.height());
    const double dfFarthest = farthestDStar(dataSet, bApplyStretching, nFrame, rcFrame);
    const CPlaceCorrection correction = placeCorrection(dataSet, bApplyStretching);
    const QPointF ptBeam = frameCentre(beamCentres(dataSet), nFrame);
    for (const double dfSpacing : ringSpacings(dfLimit > 0 ? std::min(dfFarthest, dfLimit) : dfFarthest)) {
        const std::optional<double> radius = flatRadius(1 / dfSpacing, dataSet.m_dfWavelength);
        ResolutionRing ring;
        ring.dfSpacing = dfSpacing;
        for (int i = 0; radius && i <= g_nRingPoints; ++i) {
            const double dfAngle = radians(360.0 * (i % g_nRingPoints) / g_nRingPoints);
            const double dfPixels = *radius / dataSet.m_dfPixelSize;
            const std::optional<QPointF> pt = correction.putBack(
                {dfPixels * std::cos(dfAngle), dfPixels * std::sin(dfAngle)});
            if (!pt) {
                break;
            }
            ring.polygon.append(*pt + ptBeam);
        }
        if (ring.polygon.size() == g_nRingPoints + 1) {
            ring.ptText = placeOfText(ring.polygon, rcFrame);
            vecRing.push_back(ring);
        }
    }
    return vecRing;
}

}  // namespace tessera
