// Error model: standard deviations that match the deviations of equivalents.
#pragma once

#include "integration/equivalents.h"

#include <vector>

namespace tessera {

/// sigma'² = A² (sigma² + (B·I)²), where I is the mean of the reflection's group and not the observation, as
/// sigmas that follow their own observation would pull the mean down.
struct ErrorModel {
    double dfA = 1;
    double dfB = 0;

    double variance(double dfSigma, double dfMean) const
    {
        const double dfPart = dfB * (dfMean > 0 ? dfMean : 0);
        return dfA * dfA * (dfSigma * dfSigma + dfPart * dfPart);
    }
};

/// The mean of each group over its members that are no outliers, weighted by the model; 0 where there is
/// none.
std::vector<double> groupMeans(const std::vector<Observation>& listObservation,
                               const EquivalentGroups& groups, const ErrorModel& errors);

/// What the width of deviations is taken from.
enum class DeviationWidth {
    All,  ///< their variance, those beyond four robust sigmas of their bin taken as four
    Core  ///< the median of their amount: what most of them have, however many stray
};

/// A and B such that the normalized deviations (I - mean) / sqrt(sigma'² - var(mean)), in bins of equal count
/// by intensity, have a variance of 1 all over; subtracting the variance of the mean is what corrects for the
/// multiplicity. Outliers are left out.
///
/// Below 90 deviations B is 0, and A alone is fitted; below 20, and where all agree exactly, the model stays
/// (1, 0). A lies between 0.1 and 100, B between 0 and 2.
/// Sources: Evans (2006), Acta Cryst. D62, 72–82; Evans (2011), Acta Cryst. D67, 282–292.
ErrorModel fitErrorModel(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                         DeviationWidth width = DeviationWidth::All);

/// Puts the factor of the sigma into all measured observations: for those of a group by the group's mean, for
/// others by their own intensity.
void applyErrorModel(const EquivalentGroups& groups, const ErrorModel& errors,
                     std::vector<Observation>& listObservation);

}  // namespace tessera
