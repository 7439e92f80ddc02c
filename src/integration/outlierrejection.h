// Outlier rejection: finds observations that disagree with their equivalents.
#pragma once

#include "integration/equivalents.h"
#include "integration/errormodel.h"
#include "integration/scaling.h"

#include <vector>

namespace tessera {

/// Resets the outlier flags and lists the outliers, in the order of the observations.
///
/// In a group of three or more, each observation is compared with the median of the others, in sigmas of the
/// error model plus the variance of that median, π/2 σ²/(n - 1). The worst one is rejected as long as it is
/// beyond the limit, but at most half of the group, and at least two are kept. In groups of more than 200,
/// all observations are compared with the median of the group at once.
///
/// In a group of two it is unknown which one is wrong, so both are kept unless they differ by more than twice
/// the limit. The greater one is rejected then, since overlaps, other crystals and multiple scattering add
/// intensity more often than they remove it.
std::vector<RejectedObservation> rejectOutliers(std::vector<Observation>& listObservation,
                                                const EquivalentGroups& groups, const ErrorModel& errors,
                                                double dfLimit);

}  // namespace tessera
