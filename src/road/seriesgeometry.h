// The geometry of a series refined against its indexed peaks, and what of it the data set takes.
#pragma once

#include "dataset/dataset.h"
#include "lattice/latticeanalysis.h"
#include "records/runparameters.h"
#include "records/runreport.h"
#include "refinement/geometryrefinement.h"

#include <vector>

namespace tessera {

/// The Bravais types of a lattice, seen from the cell in force, as the refinement takes them.
std::vector<CellConstraint> constraintsOf(const std::vector<LatticeType>& listType);

/// Refines the geometry of a data set against its indexed peaks, with the centres of their spots from the
/// frames (finespots.h).
/// @param dataSet  as it was on return
/// @param options  but for the number of frames, which is the data set's
/// @param nJobs    frames worked on side by side; the result is the same for each
/// @return with the reason where there is none, as without a cell in force
GeometryRefinement refineSeriesGeometry(DataSet& dataSet, const MappingParameters& mapping,
                                        GeometryRefinementOptions options, int nJobs, CRunReport& report);

/// The basis of a geometry at the precision of the data set.
ReciprocalBasis basisOf(const DiffractionGeometry& geometry);

/// Puts a model into a data set: axis, stretching, distortion, tilts, direct beam, and the cell in force and
/// as found.
///
/// The indices of the peaks are those of the model's cell; all places in reciprocal space are still the
/// former ones: peaks are to be mapped, merged and indexed anew.
void takeGeometry(DataSet& dataSet, MappingParameters& mapping, const GeometryModel& model);

}  // namespace tessera
