#include "integration/rockingcurve.h"

#include "geometry/angles.h"

#include <cmath>

namespace tessera {

namespace {

double normalDensity(double dfX, double dfSigma)
{
    return std::exp(-dfX * dfX / (2 * dfSigma * dfSigma)) / (dfSigma * std::sqrt(2 * g_dfPi));
}

}  // namespace

double RockingCurve::widthAt(double dfDStar) const
{
    return std::hypot(dfWidth, radians(dfMosaicity) * dfDStar);
}

double RockingCurve::reachAt(double dfDStar, double dfWidths) const
{
    const double dfCone = rotation.kind == RotationKind::Precession ? radians(rotation.dfPrecessionAngle) : 0;
    return dfWidths * widthAt(dfDStar) + dfCone * dfDStar;
}

double RockingCurve::density(double dfExcitation, double dfDStar) const
{
    const double dfSigma = widthAt(dfDStar);
    const double dfCone = radians(rotation.dfPrecessionAngle) * dfDStar;
    if (rotation.kind != RotationKind::Precession || !(dfCone > 0)) {
        return normalDensity(dfExcitation, dfSigma);
    }
    // The excitation error varies along the precession circle as e + cone·cos α; the average over α has a
    // peak at each end of this range (Palatinus et al. 2019, Acta Cryst. B75, 512). The midpoint rule with
    // steps below half a sigma is exact to rounding for such a smooth periodic function.
    const int nSteps = 16 + 2 * int(std::ceil(2 * g_dfPi * dfCone / dfSigma));
    double dfSum = 0;
    for (int n = 0; n < nSteps; ++n) {
        dfSum += normalDensity(dfExcitation + dfCone * std::cos(g_dfPi * (n + 0.5) / nSteps), dfSigma);
    }
    return dfSum / nSteps;
}

double RockingCurve::part(double dfFirst, double dfMiddle, double dfLast, double dfDStar) const
{
    if (rotation.kind != RotationKind::Continuous) {
        return density(dfMiddle, dfDStar) * std::abs(dfLast - dfFirst);
    }
    const double dfScale = 1 / (widthAt(dfDStar) * std::sqrt(2.0));
    return 0.5 * std::abs(std::erf(dfLast * dfScale) - std::erf(dfFirst * dfScale));
}

}  // namespace tessera
