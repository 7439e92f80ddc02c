// Outlier rejection: observations that their equivalents contradict.
#pragma once

#include "integration/equivalents.h"
#include "integration/errormodel.h"
#include "integration/scaling.h"

#include <vector>

namespace tessera {

/// Sets the flag of outliers anew and lists them, in the order of the observations.
///
/// Three and more: each is held against the median of the others of its group, in sigmas of the error model
/// with the variance of that median, π/2 σ²/(n - 1). The worst is taken away while it lies beyond the limit,
/// but no more than half of a group, and two are left. Groups above 200 are held against the median of all at
/// once.
///
/// Two: nobody knows which is wrong, so both stay unless they differ by more than twice the limit; then the
/// greater goes, as overlaps, other crystals and multiple scattering add more often than they take away.
std::vector<RejectedObservation> rejectOutliers(std::vector<Observation>& listObservation,
                                                const EquivalentGroups& groups, const ErrorModel& errors,
                                                double dfLimit);

}  // namespace tessera
