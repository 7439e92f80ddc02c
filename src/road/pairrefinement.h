// Pair refinement: the cell from the distances of indexed peaks, as the window and the stage refine it.
#pragma once

#include "dataset/dataset.h"
#include "frames/positionrefinement.h"
#include "reciprocal/cellfromdifferences.h"
#include "records/runparameters.h"
#include "records/runreport.h"

namespace tessera {

/// Runs runUnitCellRefinement() with the positions of the peaks as hunted or, where the parameters ask for
/// it, fitted on the frames by refinePeakPosition(). Fits that do not finish end the refinement.
/// @param fit  how the positions are fitted
DifferenceVectorRefinement refineCellFromPairs(DataSet& dataSet, const RefinementParameters& parameters,
                                               const PositionRefinementOptions& fit, CRunReport& report);

}  // namespace tessera
