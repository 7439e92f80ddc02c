// Pair refinement: refines the cell against distances of indexed peaks, for the window and the stage.
#pragma once

#include "dataset/dataset.h"
#include "frames/positionrefinement.h"
#include "reciprocal/cellfromdifferences.h"
#include "records/runparameters.h"
#include "records/runreport.h"

namespace tessera {

/// Runs runUnitCellRefinement() with the peak positions from hunting or, if the parameters request it, with
/// positions fitted on the frames by refinePeakPosition(). If the fits do not finish, neither does this run.
/// @param fit  how the positions are fitted
DifferenceVectorRefinement refineCellFromPairs(DataSet& dataSet, const RefinementParameters& parameters,
                                               const PositionRefinementOptions& fit, CRunReport& report);

}  // namespace tessera
