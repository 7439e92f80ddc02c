// Rotation axis search: azimuth and sense of the rotation axis from the peaks of a data set.
#pragma once

#include "dataset/dataset.h"
#include "lattice/axissearch.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <optional>
#include <vector>

namespace tessera {

/// The peaks of all frames relative to the direct beam, the stretching undone if it is applied, with the tilt
/// that the mapping turns them by. Empty unless canMapPeaks().
std::vector<FlatPeak> flatPeaksOf(const DataSet& dataSet, const MappingParameters& parameters);

/// searchAxis() on the peaks of a data set, whose axis neither enters nor changes. Writes what was found,
/// with the second maximum, the sense and the curve; where nothing was found the curve alone.
/// @param nJobs  threads; the result is the same for every number
/// @return none when it was stopped
std::optional<AxisSearch> findRotationAxis(const DataSet& dataSet, const MappingParameters& parameters,
                                           CRunReport& report, int nJobs = 1);

}  // namespace tessera
