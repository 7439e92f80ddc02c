#include "simulate/spotprofile.h"

#include "simulate/angles.h"

#include <cmath>

namespace tessera {

namespace {

double moffatSquareWidth(const SimulationParameters& parameters)
{
    // Half height at r² = a² (sqrt 2 - 1), for the Gaussian at r² = 2 ln 2 sigma².
    const double dfSigma = parameters.dfSpotSigma;
    return 2 * std::log(2.0) / (std::sqrt(2.0) - 1) * dfSigma * dfSigma;
}
}  // namespace

double spotProfile(const SimulationParameters& parameters, double dfSquaredDistance)
{
    if (parameters.spotShape == SpotShape::Moffat) {
        const double dfA2 = moffatSquareWidth(parameters);
        const double df = 1 + dfSquaredDistance / dfA2;
        return 1 / (g_dfPi * dfA2 * df * df);
    }
    const double dfVariance = parameters.dfSpotSigma * parameters.dfSpotSigma;
    return std::exp(-dfSquaredDistance / (2 * dfVariance)) / (2 * g_dfPi * dfVariance);
}

double spotShareWithin(const SimulationParameters& parameters, double dfRadius)
{
    const double df2 = dfRadius * dfRadius;
    if (parameters.spotShape == SpotShape::Moffat) {
        return 1 - 1 / (1 + df2 / moffatSquareWidth(parameters));
    }
    return 1 - std::exp(-df2 / (2 * parameters.dfSpotSigma * parameters.dfSpotSigma));
}

double spotDrawRadius(const SimulationParameters& parameters)
{
    return parameters.dfSpotSigma * (parameters.spotShape == SpotShape::Moffat ? 15 : 6);
}

}  // namespace tessera
