// The indexed peaks of a data set with their subpixel positions.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"
#include "refinement/geometryspot.h"

#include <vector>

namespace tessera {

/// The spots of geometrySpots() with subpixel places measured on the frames, see moveToSpotCentres(). The
/// width of the spots is measured on some of the frames first.
///
/// The frames are read once. If they cannot be read, if the width cannot be determined, or if the run is
/// stopped, the spots keep only the pixels found by peak hunting, and a line of the log says so.
/// @param dataSet  unchanged on return
/// @param nJobs    frames processed in parallel; the result is the same for every number
std::vector<GeometrySpot> fineSpots(DataSet& dataSet, int nJobs, CRunReport& report);

}  // namespace tessera
