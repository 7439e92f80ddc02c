#include "geometry/placecorrection.h"

#include "geometry/rotationgeometry.h"

#include <cmath>

namespace tessera {

CPlaceCorrection::CPlaceCorrection(const std::optional<Stretching>& stretching,
                                   const SeriesDistortion& distortion)
    : m_stretching(stretching),
      m_bBeside(distortion.movesPlaces()),
      m_dfRadius(distortion.dfRadius),
      m_beside(planeTerms(distortion)),
      m_all(m_beside)
{
    if (stretching) {
        const double dfTwice = 2 * radians(stretching->dfAzimuth);
        m_all.stretchingCos = stretching->dfAmplitude / 100 * std::cos(dfTwice);
        m_all.stretchingSin = stretching->dfAmplitude / 100 * std::sin(dfTwice);
    }
}

QPointF CPlaceCorrection::undone(const QPointF& pt) const
{
    const QPointF ptRound = m_stretching
                                ? applyStretching(pt, m_stretching->dfAmplitude, m_stretching->dfAzimuth)
                                : pt;
    if (!m_bBeside) {
        return ptRound;
    }
    const std::array<double, 2> flat = undistorted(m_beside, m_dfRadius, {pt.x(), pt.y()});
    return ptRound + (QPointF(flat[0], flat[1]) - pt);
}

std::optional<QPointF> CPlaceCorrection::putBack(const QPointF& pt) const
{
    if (m_bBeside) {
        const std::optional<FramePlace> place = distorted(m_all, m_dfRadius, {pt.x(), pt.y()});
        return place ? std::optional<QPointF>({place->dfX, place->dfY}) : std::nullopt;
    }
    if (!m_stretching) {
        return pt;
    }
    // The stretching does not change the direction, on which alone its factor depends.
    const double dfAngle = -std::atan2(pt.y(), pt.x()) - radians(m_stretching->dfAzimuth);
    return pt / (1 + m_stretching->dfAmplitude / 100 * std::cos(2 * dfAngle));
}

}  // namespace tessera
