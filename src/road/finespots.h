// The indexed peaks of a data set with the centres of their spots.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"
#include "refinement/geometryspot.h"

#include <vector>

namespace tessera {

/// The spots of geometrySpots(), with fine places from the frames: see moveToSpotCentres(). The width of the
/// spots is measured on some of the frames.
///
/// The frames are read once. Where they cannot be read, show no spots whose width can be told, or where the
/// report asks to stop, the spots have their hunted pixels alone, and a line says so.
/// @param dataSet  as it was on return
/// @param nJobs    frames worked on side by side; the result is the same for each
std::vector<GeometrySpot> fineSpots(DataSet& dataSet, int nJobs, CRunReport& report);

}  // namespace tessera
