#include "crystal/ewald.h"

#include "geometry/angles.h"
#include "geometry/placecorrection.h"

#include <QString>

#include <cmath>

namespace tessera {

bool calEwaldTilt(double dfWavelength, const Vec3D& g, double& dfTilt, double dfAxisOutOfPlane)
{
    constexpr double dfHalfPi = g_dfPi / 2;
    const double dfSphereRadius = 1 / dfWavelength;
    // Rotated by −θ about the axis (axisX, 0, axisZ), the point has, by Rodrigues' formula,
    //     z = axisX·(across·cos θ − g.y·sin θ) + axisZ·along,
    // and it lies on the sphere about (0, 0, −1/λ), which goes through the origin, where |g|² + 2·z/λ = 0.
    // These are the coefficients of sin θ, of cos θ and of 1 in this condition.
    const double dfAxisX = std::cos(radians(dfAxisOutOfPlane)), dfAxisZ = std::sin(radians(dfAxisOutOfPlane));
    const double dfAcross = dfAxisX * double(g.z) - dfAxisZ * double(g.x);
    const double dfAlong = dfAxisX * double(g.x) + dfAxisZ * double(g.z);
    const double dfA = -2 * (dfAxisX * double(g.y)) * dfSphereRadius;
    const double dfB = 2 * (dfAxisX * dfAcross) * dfSphereRadius;
    const double dfC = double(dot(g, g)) + 2 * (dfAxisZ * dfAlong) * dfSphereRadius;
    const double dfSquares = dfA * dfA + dfB * dfB;
    const double dfUnderRoot = (dfSquares - dfC * dfC) * (dfB * dfB);
    // The sphere does not reach the point where this is below 0. A point on the axis does not move. The
    // comparison is negated so that it refuses NaN, too.
    if (!(dfUnderRoot >= 0) || (dfA == 0 && dfB == 0)) {
        return false;
    }

    double dfTheta1, dfTheta2;  // the one with the smaller sin θ first
    if (dfB == 0) {
        // With B = 0 the product above is 0 whether or not the sphere reaches the point. Where it does not,
        // this root of a negative number is NaN.
        const double dfSine = -dfC / dfA;
        const double dfCosine = std::sqrt((dfA * dfA - dfC * dfC) / (dfA * dfA));
        if (std::isnan(dfCosine)) {
            return false;
        }
        dfTheta1 = std::atan2(dfSine, dfCosine);
        dfTheta2 = std::atan2(dfSine, -dfCosine);
    } else {
        // sin θ = (−A·C ∓ |B|·√(A² + B² − C²)) / (A² + B²), and cos θ = −(C + A·sin θ) / B.
        const double dfRoot = std::sqrt(dfUnderRoot);
        dfTheta1 = std::atan2((-dfC * dfA - dfRoot) / dfSquares,
                              (dfRoot * dfA - dfB * dfB * dfC) / (dfSquares * dfB));
        dfTheta2 = std::atan2((dfRoot - dfC * dfA) / dfSquares,
                              (-dfB * dfB * dfC - dfRoot * dfA) / (dfSquares * dfB));
    }
    const double dfTheta = std::fabs(dfTheta1) < dfHalfPi ? dfTheta1 : dfTheta2;
    if (!std::isfinite(dfTheta)) {
        return false;
    }
    dfTilt = dfTheta;
    return true;
}

int calClosestFrame(double dfFrameAngle, const QList<double>& listOverallTilt)
{
    int nClosest = -1;
    double dfLeast = 0;
    for (int n = 0; n < listOverallTilt.size(); ++n) {
        const double dfDistance = std::fabs(dfFrameAngle - listOverallTilt[n]);
        if (nClosest < 0 || dfDistance < dfLeast) {
            nClosest = n;
            dfLeast = dfDistance;
        }
    }
    return nClosest;
}

bool calFramePosition(QList<Peak3D>& listPeak, const FramePositionGeometry& geometry, CRunReport& report)
{
    // From x along the rotation axis to x along the rows of the frame.
    const CMatrix3 matToFrame = rotationZ(-geometry.dfRotationAxis);
    const float fCentreZ = float(1 / geometry.dfWavelength);  // of the sphere of the mapping, Å⁻¹
    const double dfOutOfPlane = geometry.distortion.dfAxisOutOfPlane;
    const CPlaceCorrection correction({}, geometry.distortion);
    QList<Peak3D> listWork = listPeak;
    for (Peak3D& peak : listWork) {
        double dfTilt = 0;
        if (!calEwaldTilt(geometry.dfWavelength, peak.point(), dfTilt, dfOutOfPlane)) {
            report.addMessage(QStringLiteral("Reflection (%1,%2,%3) is not cut by Ewald sphere.")
                                  .arg(peak.dfH, 0, 'f', 3)
                                  .arg(peak.dfK, 0, 'f', 3)
                                  .arg(peak.dfL, 0, 'f', 3));
            return false;
        }
        const double dfDegrees = dfTilt * 180 / g_dfPi;
        const int nFrame = calClosestFrame(dfDegrees, geometry.listOverallTilt);
        peak.dfFrameTilt = dfDegrees;
        const Vec3D vecAtTilt =
            matToFrame.multiplied(rotationAboutAxis(-dfDegrees, dfOutOfPlane)).multiplied(peak.point());
        // The line from the centre of the sphere (0, 0, 1/λ) through the point meets the flat pattern, z = 0,
        // at this multiple of the point's x and y.
        const float fScale = -fCentreZ / (vecAtTilt.z - fCentreZ);
        if (!geometry.centres.holds(nFrame)) {
            report.addMessage(
                QStringLiteral("Frame No. from tilt angle %L1 degrees is out of range!").arg(dfDegrees));
            return false;
        }
        const std::optional<QPointF> pt = correction.putBack(
            {double(vecAtTilt.x * fScale) / geometry.dfPixelSize,
             double(vecAtTilt.y * fScale) / geometry.dfPixelSize});
        if (!pt) {
            report.addMessage(QStringLiteral("The distortion leaves reflection (%1,%2,%3) no place.")
                                  .arg(peak.dfH, 0, 'f', 3)
                                  .arg(peak.dfK, 0, 'f', 3)
                                  .arg(peak.dfL, 0, 'f', 3));
            return false;
        }
        const QPointF& ptShift = geometry.centres.m_listShift[nFrame];
        peak.dfX2D = pt->x() + ptShift.x() + geometry.centres.m_dfCenterX;
        peak.dfY2D = pt->y() + geometry.centres.m_dfCenterY + ptShift.y();
        peak.nFrame = nFrame;
    }
    listPeak = listWork;
    return true;
}

}  // namespace tessera
