// Intensities of a series that stands indexed, with all that they need, in one call.
#pragma once

#include "road/intensities.h"

namespace tessera {

/// What the stages of the road do one after the other from an indexed data set on: looks at the lattice of
/// the cell in force, refines the geometry against the indexed peaks where these are of that cell, finds the
/// intensities, and tells their tables to the report. The data set stays as it is.
/// @param result  replaced when the run finished, else as it was
RunOutcome intensitiesOfSeries(DataSet& dataSet, const MappingParameters& mapping,
                               const IntensityOptions& options, int nJobs, CRunReport& report,
                               IntegrationResult& result);

}  // namespace tessera
