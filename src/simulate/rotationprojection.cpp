#include "simulate/rotationprojection.h"

#include "simulate/angles.h"

namespace tessera {

namespace {}

CRotationProjection::CRotationProjection(double dfWavelength, double dfPixelSize, double dfAxis,
                                         double dfStretchAmplitude, double dfStretchAzimuth)
    : m_dfRadius(1 / dfWavelength),
      m_dfPixelSize(dfPixelSize),
      m_dfAxis(radians(dfAxis)),
      m_dfStretch(dfStretchAmplitude / 100),
      m_dfStretchAzimuth(radians(dfStretchAzimuth))
{}

Vector3 CRotationProjection::turned(const Vector3& vecLattice, double dfTilt) const
{
    const double dfCos = std::cos(radians(dfTilt)), dfSin = std::sin(radians(dfTilt));
    return {vecLattice[0], dfCos * vecLattice[1] + dfSin * vecLattice[2],
            dfCos * vecLattice[2] - dfSin * vecLattice[1]};
}

double CRotationProjection::excitationError(const Vector3& vecTurned) const
{
    // K - |k + g| without the cancellation of two lengths of 40 Å⁻¹: the difference of the squares
    // over the sum.
    const double dfK = m_dfRadius;
    const double dfDiffracted = lengthOf({vecTurned[0], vecTurned[1], vecTurned[2] - dfK});
    return (2 * dfK * vecTurned[2] - dotProduct(vecTurned, vecTurned)) / (dfK + dfDiffracted);
}

double CRotationProjection::excitationError(const Vector3& vecTurned, const Vector3& vecSource) const
{
    const double dfK = m_dfRadius;
    const double dfDiffracted = lengthOf(vecTurned - dfK * vecSource);
    return (2 * dfK * dotProduct(vecTurned, vecSource) - dotProduct(vecTurned, vecTurned)) /
           (dfK + dfDiffracted);
}

std::array<double, 2> CRotationProjection::spotOffset(const Vector3& vecTurned) const
{
    // The ray k + g with k = (0, 0, -K) meets a detector at distance K from the crystal, on which
    // the direct beam marks the origin and a length is a length of reciprocal space.
    const double dfScale = m_dfRadius / (m_dfRadius - vecTurned[2]);
    const double dfAlong = dfScale * vecTurned[0], dfAcross = dfScale * vecTurned[1];
    const double dfX = (std::cos(m_dfAxis) * dfAlong + std::sin(m_dfAxis) * dfAcross) / m_dfPixelSize;
    const double dfY = (std::cos(m_dfAxis) * dfAcross - std::sin(m_dfAxis) * dfAlong) / m_dfPixelSize;
    // The correction multiplies what is measured by 1 - A cos 2(alpha - azimuth) and keeps the
    // polar angle alpha, so dividing by the same factor undoes it exactly.
    const double dfPolar = std::atan2(-dfY, dfX);
    const double dfFactor = 1 / (1 - m_dfStretch * std::cos(2 * (dfPolar - m_dfStretchAzimuth)));
    return {dfFactor * dfX, dfFactor * dfY};
}

double meanRockingCurve(double dfFirst, double dfLast, double dfWidth)
{
    const double dfSpan = (dfLast - dfFirst) / dfWidth;
    if (std::abs(dfSpan) < 1e-6) {
        return std::exp(-0.5 * std::pow((dfFirst + dfLast) / (2 * dfWidth), 2));
    }
    const double dfRoot = std::sqrt(2.0);
    return std::sqrt(g_dfPi / 2) *
           (std::erf(dfLast / (dfRoot * dfWidth)) - std::erf(dfFirst / (dfRoot * dfWidth))) / dfSpan;
}

Matrix3 orientationFromUniform(double dfU1, double dfU2, double dfU3)
{
    const double dfA = std::sqrt(1 - dfU1), dfB = std::sqrt(dfU1);
    const double x = dfA * std::sin(2 * g_dfPi * dfU2), y = dfA * std::cos(2 * g_dfPi * dfU2);
    const double z = dfB * std::sin(2 * g_dfPi * dfU3), w = dfB * std::cos(2 * g_dfPi * dfU3);
    return {Vector3{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
            Vector3{2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
            Vector3{2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)}};
}

}  // namespace tessera
