#include "crystal/ewald.h"

#include "geometry/angles.h"
#include "geometry/placecorrection.h"

#include <QString>

#include <cmath>

namespace tessera {

bool calEwaldTilt(double dfWavelength, const Vec3D& g, double& dfTilt, double dfAxisOutOfPlane)
{
    constexpr double dfHalfPi = g_dfPi / 2;
    const double dfK = 1 / dfWavelength;
    // The turn about (x, 0, z) leaves what lies along it; for an axis in the plane x is 1 and z is 0.
    const double dfX0 = std::cos(radians(dfAxisOutOfPlane)), dfZ0 = std::sin(radians(dfAxisOutOfPlane));
    const double dfAcross = dfX0 * double(g.z) - dfZ0 * double(g.x);
    const double dfAlong = dfX0 * double(g.x) + dfZ0 * double(g.z);
    const double dfA = -2 * (dfX0 * double(g.y)) * dfK;
    const double dfB = 2 * (dfX0 * dfAcross) * dfK;
    const double dfC = double(dot(g, g)) + 2 * (dfZ0 * dfAlong) * dfK;
    const double dfS = dfA * dfA + dfB * dfB;
    const double dfX = (dfS - dfC * dfC) * (dfB * dfB);
    if (!(dfX >= 0) || (dfA == 0 && dfB == 0)) {
        return false;
    }

    double dfTheta1, dfTheta2;
    if (dfB == 0) {
        // X is 0 here whether or not the sphere reaches the point; a negative root says that it doesn't.
        const double dfU = -dfC / dfA;
        const double dfV = std::sqrt((dfA * dfA - dfC * dfC) / (dfA * dfA));
        if (std::isnan(dfV)) {
            return false;
        }
        dfTheta1 = std::atan2(dfU, dfV);
        dfTheta2 = std::atan2(dfU, -dfV);
    } else {
        const double dfR = std::sqrt(dfX);
        dfTheta1 = std::atan2((-dfC * dfA - dfR) / dfS, (dfR * dfA - dfB * dfB * dfC) / (dfS * dfB));
        dfTheta2 = std::atan2((dfR - dfC * dfA) / dfS, (-dfB * dfB * dfC - dfR * dfA) / (dfS * dfB));
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
    const CMatrix3 matToFrame = rotationZ(-geometry.dfRotationAxis);
    const float fK = float(1 / geometry.dfWavelength);
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
        const Vec3D u =
            matToFrame.multiplied(rotationAboutAxis(-dfDegrees, dfOutOfPlane)).multiplied(peak.point());
        // Along the line from the sphere's centre down to the flat pattern.
        const float fScale = -fK / (u.z - fK);
        if (!geometry.centres.holds(nFrame)) {
            report.addMessage(
                QStringLiteral("Frame No. from tilt angle %L1 degrees is out of range!").arg(dfDegrees));
            return false;
        }
        const std::optional<QPointF> pt = correction.putBack(
            {double(u.x * fScale) / geometry.dfPixelSize, double(u.y * fScale) / geometry.dfPixelSize});
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
