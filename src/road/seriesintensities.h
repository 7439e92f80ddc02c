// Intensities of an indexed series, including the refinement of its geometry, in one call.
#pragma once

#include "road/intensities.h"

namespace tessera {

/// Does what the stages of the road do from an indexed data set on: analyses the lattice of the cell in
/// force, refines the geometry if the peaks are indexed with that cell, determines the intensities, and
/// writes their tables to the report. The data set is unchanged.
RunResult<IntegrationResult> intensitiesOfSeries(DataSet& dataSet, const MappingParameters& mapping,
                                                 const IntensityOptions& options, int nJobs,
                                                 CRunReport& report);

}  // namespace tessera
