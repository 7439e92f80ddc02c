#include "geometry/rotationgeometry.h"

#include "geometry/angles.h"
#include "geometry/diffractiongeometry.h"

#include <cmath>

namespace tessera {

QPointF frameCentre(const BeamCentres& centres, int nFrame)
{
    const QPointF ptShift = centres.holds(nFrame) ? centres.m_listShift[nFrame] : QPointF();
    return {centres.m_dfCenterX + ptShift.x(), centres.m_dfCenterY + ptShift.y()};
}

CMatrix3 rotationZ(double dfDegrees)
{
    const double dfCos = std::cos(radians(dfDegrees));
    const double dfSin = std::sin(radians(dfDegrees));
    return {dfCos, -dfSin, 0, dfSin, dfCos, 0, 0, 0, 1};
}

CMatrix3 rotationX(double dfDegrees)
{
    const double dfCos = std::cos(radians(dfDegrees));
    const double dfSin = std::sin(radians(dfDegrees));
    return {1, 0, 0, 0, dfCos, -dfSin, 0, dfSin, dfCos};
}

CMatrix3 rotationAboutAxis(double dfDegrees, double dfOutOfPlane)
{
    if (dfOutOfPlane == 0) {
        return rotationX(dfDegrees);
    }
    TurnTerms<double> terms;
    terms.outOfPlane = dfOutOfPlane;
    const std::array<double, 9> turn = turnToLaboratory(terms, 0, dfDegrees);
    return {turn[0], turn[3], turn[6], turn[1], turn[4], turn[7], turn[2], turn[5], turn[8]};
}

Vec3D rotated(const CMatrix3& matrix, const Vec3D& v)
{
    return matrix.multiplied(v);
}

Vec3D ewaldPoint(const Vec3D& vecFlat, double dfWavelength)
{
    // The direct beam is the origin by definition. The formula would miss it by some 1e-6, as 1/λ is rounded.
    if (vecFlat == Vec3D()) {
        return {};
    }
    const double dfK = 1 / dfWavelength;
    const Vec3D vecFromCentre = {vecFlat.x, vecFlat.y, vecFlat.z - float(dfK)};
    const double dfLength = double(length(vecFromCentre));
    const double dfLift = (dfLength - dfK) / dfLength;
    return vecFlat - scaledDouble(vecFromCentre, dfLift);
}

QPointF applyStretching(QPointF pt, double dfAmplitude, double dfAzimuth)
{
    const double dfScale = 1 + dfAmplitude / 100 *
                                   std::cos(2 * (-std::atan2(pt.y(), pt.x()) - radians(dfAzimuth)));
    return {dfScale * pt.x(), dfScale * pt.y()};
}

QPointF calPeak2DPosFrame(const BeamCentres& centres, int nFrameNo, QPointF pt)
{
    return centres.holds(nFrameNo) ? pt + frameCentre(centres, nFrameNo) : QPointF();
}

QPointF calPeak2DPosCenterCorrected(const BeamCentres& centres, int nFrameNo, QPointF pt)
{
    return centres.holds(nFrameNo) ? pt - frameCentre(centres, nFrameNo) : QPointF();
}

float calDistanceToRotationAxis(const BeamCentres& centres, double dfRotationAxis, int nFrameNo,
                                const QPointF& pt)
{
    if (!centres.holds(nFrameNo)) {
        return 0;
    }
    const QPointF ptCentre = frameCentre(centres, nFrameNo);
    // The tangent of ±90° is a large finite number here, so the division needs no special case.
    const float fTan = float(std::tan(radians(dfRotationAxis)));
    const float fSquare = fTan * fTan + 1;
    return float(std::fabs(double(fTan) * (pt.x() - ptCentre.x()) + (pt.y() - ptCentre.y())) /
                 std::sqrt(double(fSquare)));
}

float calAngleToRotationAxis(const BeamCentres& centres, double dfRotationAxis, int nFrameNo,
                             const Peak3D& peak)
{
    if (!centres.holds(nFrameNo)) {
        return 0;
    }
    const QPointF ptCentre = frameCentre(centres, nFrameNo);
    double dfAxis = dfRotationAxis;
    if (dfAxis < -90) {
        dfAxis += 180;
    }
    if (dfAxis > 90) {
        dfAxis -= 180;
    }
    const double dfX = peak.dfX2D - ptCentre.x();
    const double dfY = peak.dfY2D - ptCentre.y();
    double dfAngle = dfX == 0 ? std::fabs(90 - dfAxis) : std::fabs(degrees(std::atan(-dfY / dfX)) - dfAxis);
    if (dfAngle > 90) {
        dfAngle = 180 - dfAngle;
    }
    return float(dfAngle);
}

}  // namespace tessera
