// Error model: standard deviations adjusted to the scatter of equivalent observations.
#pragma once

#include "integration/equivalents.h"

#include <vector>

namespace tessera {

/// sigma'² = A² (sigma² + (B·I)²). I is the mean of the group of equivalents rather than the observation
/// itself, since sigmas that depend on their own observation bias the weighted mean towards low values.
struct ErrorModel {
    double dfA = 1;
    double dfB = 0;

    /// sigma'² of an observation with the sigma dfSigma in a group with the mean dfMean.
    double variance(double dfSigma, double dfMean) const
    {
        const double dfPart = dfB * (dfMean > 0 ? dfMean : 0);
        return dfA * dfA * (dfSigma * dfSigma + dfPart * dfPart);
    }
};

/// The mean of each group without outliers, weighted by the error model; 0 for a group without members.
std::vector<double> groupMeans(const std::vector<Observation>& listObservation,
                               const EquivalentGroups& groups, const ErrorModel& errors);

/// How the width of the distribution of deviations is measured.
enum class DeviationWidth {
    All,  ///< by their variance; deviations beyond four robust sigmas of their bin count as four
    Core  ///< by the median of their absolute values, which tails do not affect
};

/// Finds A and B such that the normalized deviations (I - mean) / sqrt(sigma'² - var(mean)), in bins of equal
/// count by intensity, have unit variance; subtracting the variance of the mean corrects for the
/// multiplicity. Outliers are left out.
///
/// With fewer than 90 deviations B is 0 and only A is fitted; with fewer than 20, and if all observations
/// agree exactly, the model stays (1, 0). A is limited to 0.1 to 100, B to 0 to 2. Sources: Evans (2006),
/// Acta Cryst. D62, 72–82; Evans (2011), Acta Cryst. D67, 282–292.
ErrorModel fitErrorModel(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                         DeviationWidth width = DeviationWidth::All);

/// Sets the sigma factor of all measured observations, by the mean of their group or, for observations
/// without a group, by their own intensity.
void applyErrorModel(const EquivalentGroups& groups, const ErrorModel& errors,
                     std::vector<Observation>& listObservation);

}  // namespace tessera
