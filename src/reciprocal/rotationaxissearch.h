// Rotation axis search: azimuth and sense of the rotation axis from the peaks of a data set.
#pragma once

#include "dataset/dataset.h"
#include "lattice/axissearch.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <optional>
#include <vector>

namespace tessera {

/// The peaks of all frames in the plane of their frame, pixels relative to its direct beam, each with the
/// tilt that the mapping turns it by. What the mapping undoes in this plane is undone: the stretching if the
/// parameters apply it, and the other distortions. Empty unless canMapPeaks().
std::vector<FlatPeak> flatPeaksOf(const DataSet& dataSet, const MappingParameters& parameters);

/// Runs searchAxis() on the peaks of a data set. The axis that the data set has is neither used nor changed,
/// and the axis is taken to lie in the plane of the frames. The log gets what was found: the axis, the second
/// maximum, how sure the sense is, and the curve. Where no axis was found it gets the curve alone, if there
/// is one; the reason is in the result.
/// @param nJobs  threads; the result is the same for every number
/// @return nothing when the search was stopped
std::optional<AxisSearch> findRotationAxis(const DataSet& dataSet, const MappingParameters& parameters,
                                           CRunReport& report, int nJobs = 1);

}  // namespace tessera
