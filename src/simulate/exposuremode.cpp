#include "simulate/exposuremode.h"

#include "simulate/angles.h"
#include "simulate/randomsource.h"

#include <algorithm>

namespace tessera {

namespace {
constexpr std::uint64_t g_nStreamWobble = 7ull << 40;
constexpr double g_dfFarthest = 5;  // widths from the sphere beyond which nothing is recorded
}  // namespace

CExposureMode::CExposureMode(const SimulationParameters& parameters, const CRotationProjection& projection)
    : m_parameters(parameters), m_projection(projection)
{}

double CExposureMode::width(double dfDStar) const
{
    return std::hypot(m_parameters.dfRocking, radians(m_parameters.dfMosaicity) * dfDStar);
}

double CExposureMode::precessionReach(double dfDStar) const
{
    return std::sin(radians(m_parameters.dfPrecession)) * dfDStar;
}

double CExposureMode::recordedMean(const Vector3& vecLattice, double dfTilt, double dfDStar) const
{
    const double dfWidth = width(dfDStar);
    if (m_parameters.dfPrecession > 0) {
        return precessedMean(m_projection.turned(vecLattice, dfTilt), dfDStar);
    }
    const double dfHalf = m_parameters.isStepped() ? 0 : m_parameters.dfTiltStep / 2;
    const double dfFirst = m_projection.excitationError(m_projection.turned(vecLattice, dfTilt - dfHalf));
    const double dfLast = m_projection.excitationError(m_projection.turned(vecLattice, dfTilt + dfHalf));
    if (std::min(std::abs(dfFirst), std::abs(dfLast)) > g_dfFarthest * dfWidth && dfFirst * dfLast > 0) {
        return 0;
    }
    return meanRockingCurve(dfFirst, dfLast, dfWidth);
}

double CExposureMode::precessedMean(const Vector3& vecTurned, double dfDStar) const
{
    const double dfWidth = width(dfDStar), dfReach = precessionReach(dfDStar);
    if (std::abs(m_projection.excitationError(vecTurned)) > g_dfFarthest * dfWidth + dfReach) {
        return 0;
    }
    // The integrand is smooth and periodic, so that even steps of the azimuth converge as fast as any rule:
    // half a width apart in the excitation error they leave no error that shows.
    const int nSteps = std::max(16, int(std::ceil(4 * g_dfPi * dfReach / dfWidth)));
    const double dfCone = radians(m_parameters.dfPrecession);
    double dfSum = 0;
    for (int n = 0; n < nSteps; ++n) {
        const double dfAzimuth = 2 * g_dfPi * n / nSteps;
        const double dfExcitation = m_projection.excitationError(
            vecTurned, {std::sin(dfCone) * std::cos(dfAzimuth), std::sin(dfCone) * std::sin(dfAzimuth),
                        std::cos(dfCone)});
        dfSum += std::exp(-0.5 * std::pow(dfExcitation / dfWidth, 2));
    }
    return dfSum / nSteps;
}

std::array<double, 2> CExposureMode::recordedTilts(const std::vector<double>& listTilt) const
{
    const auto [itLeast, itMost] = std::minmax_element(listTilt.begin(), listTilt.end());
    const double dfHalf = m_parameters.isStepped() ? 0 : std::abs(m_parameters.dfTiltStep) / 2;
    return {*itLeast - dfHalf, *itMost + dfHalf};
}

std::vector<double> frameScales(const SimulationParameters& parameters)
{
    CRandomSource random(parameters.nSeed, g_nStreamWobble);
    const double dfPhase1 = 2 * g_dfPi * random.uniform(), dfPhase3 = 2 * g_dfPi * random.uniform();
    std::vector<double> listScale(parameters.nFrames, 1);
    for (int n = 0; n < parameters.nFrames; ++n) {
        const double dfDone = parameters.nFrames > 1 ? double(n) / (parameters.nFrames - 1) : 0;
        double& dfScale = listScale[n];
        if (parameters.dfFade != 1) {
            dfScale *= std::pow(parameters.dfFade, dfDone);
        }
        if (parameters.dfScaleWobble > 0) {
            dfScale *= 1 + parameters.dfScaleWobble *
                               (std::sin(2 * g_dfPi * dfDone + dfPhase1) +
                                std::sin(6 * g_dfPi * dfDone + dfPhase3)) /
                               2;
        }
        if (n + 1 == parameters.nBlankFrame) {
            dfScale = 0;
        }
    }
    return listScale;
}

std::vector<double> frameDecays(const SimulationParameters& parameters)
{
    std::vector<double> listDecay(parameters.nFrames, 0);
    for (int n = 1; n < parameters.nFrames; ++n) {
        listDecay[n] = parameters.dfFadeB * n / (parameters.nFrames - 1);
    }
    return listDecay;
}

QString exposureModeName(const SimulationParameters& parameters)
{
    return parameters.dfPrecession > 0 ? QStringLiteral("precession")
           : parameters.bStepped       ? QStringLiteral("stepped")
                                       : QStringLiteral("continuous");
}

}  // namespace tessera
