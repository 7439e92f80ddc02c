// Refines the geometry of a data set, and puts a refined geometry in force.
#pragma once

#include "dataset/dataset.h"
#include "lattice/latticeanalysis.h"
#include "records/runparameters.h"
#include "records/runreport.h"
#include "refinement/geometryrefinement.h"

#include <vector>

namespace tessera {

/// The Bravais types of a lattice as constraints for the refinement, in terms of the cell in force.
std::vector<CellConstraint> constraintsOf(const std::vector<LatticeType>& listType);

/// Refines the geometry of a data set against its indexed peaks, with subpixel positions measured on the
/// frames (finespots.h).
/// @param dataSet  unchanged on return
/// @param options  the number of frames is taken from the data set
/// @param nJobs    frames processed in parallel; the result is the same for every number
/// @return with the reason if nothing was refined, for example because there is no cell
GeometryRefinement refineSeriesGeometry(DataSet& dataSet, const MappingParameters& mapping,
                                        GeometryRefinementOptions options, int nJobs, CRunReport& report);

/// The reciprocal basis of a geometry, in the precision of the data set.
ReciprocalBasis basisOf(const DiffractionGeometry& geometry);

/// Puts a model in force: axis, stretching, distortion, tilts, direct beam, and cell (both in force and as
/// found).
///
/// The peaks in reciprocal space are not updated: they have to be mapped, merged and indexed again.
void takeGeometry(DataSet& dataSet, MappingParameters& mapping, const GeometryModel& model);

}  // namespace tessera
