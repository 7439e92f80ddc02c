#include "integration/absencelikelihood.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfDynamicMean = 0.06;
const double g_dfEvenPart = 0.05;
const double g_dfEvenReach = 2;

/// The density of the true ratio (up to 5), convolved with the error of the measurement.
template <class Density>
double blurred(const AbsenceRatio& ratio, const Density& densityOf)
{
    // A smaller error would fall between the points of the numerical integration.
    const double dfError = std::max(ratio.dfRatioError, 0.01);
    const int nSteps = 1000;
    const double dfStep = 5.0 / nSteps;
    double dfSum = 0;
    for (int n = 0; n < nSteps; ++n) {
        const double dfTrue = (n + 0.5) * dfStep;
        const double dfPlace = (ratio.dfRatio - dfTrue) / dfError;
        dfSum += densityOf(dfTrue) * std::exp(-dfPlace * dfPlace / 2) * dfStep;
    }
    return (1 - g_dfEvenPart) * dfSum / (dfError * std::sqrt(2 * g_dfPi)) + g_dfEvenPart / g_dfEvenReach;
}

}  // namespace

double densityOfForbidden(const AbsenceRatio& ratio)
{
    return blurred(ratio, [](double df) { return std::exp(-df / g_dfDynamicMean) / g_dfDynamicMean; });
}

double densityOfAllowed(const AbsenceRatio& ratio)
{
    const double dfLeastVariance = 1.0 / 6;
    const double dfSampling = 2.0 / std::max(1, ratio.nReflections) +
                              (ratio.nReference > 0 ? 2.0 / ratio.nReference : 0);
    const double dfShape = 1 / std::max(dfSampling, dfLeastVariance);
    const double dfLogNorm = dfShape * std::log(dfShape) - std::lgamma(dfShape);
    return blurred(
        ratio, [&](double df) { return std::exp(dfLogNorm + (dfShape - 1) * std::log(df) - dfShape * df); });
}

}  // namespace tessera
