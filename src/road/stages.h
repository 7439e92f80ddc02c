// The stages of the road, as functions that work on its state.
#pragma once

#include "road/roadstate.h"

namespace tessera {

// All stages round the parameters as the pages of the window do, and put their results into the data set and
// the results of the state. A stage that does not finish leaves its files as they were.

/// Determines drift and direct beam from a region that is given or found on the frames; writes the shift
/// file.
StageResult runShiftStage(RoadState& state);

/// Finds the peaks of all frames, with a threshold that is given or derived from the noise; writes the peak
/// list.
StageResult runPeakStage(RoadState& state);

/// Maps the peaks into reciprocal space and merges those within the limits, all of them or one group.
StageResult runMergeStage(RoadState& state);

/// Determines the cell from the merged reflections, or reads it from a file; writes the unit-cell file,
/// unless it was read from that very file.
StageResult runCellStage(RoadState& state);

/// Indexes the merged reflections, refines the cell against their d* and judges the result. The result files
/// are written together, and only if the road starts at this stage or before it.
StageResult runIndexStage(RoadState& state);

/// Refines axis, direct beam, distortions and cell together against the indexed peaks; writes the refined
/// project and cell. If nothing can be refined, it says so in the log and changes nothing.
StageResult runGeometryStage(RoadState& state);

/// Predicts all reflections that cross the Ewald sphere, from the refined geometry or else the one in force;
/// integrates, scales, merges and judges them, and writes the files for structure solution. If the frames
/// give no intensities, or if the cell is judged bad, it says so in the log and changes nothing.
StageResult runIntegrateStage(RoadState& state);

/// Refines the cell from the distances of indexed peaks on one frame, with their positions from hunting and
/// as fitted on the frames. The result is only in the log and the results, not in a file.
StageResult runRefineStage(RoadState& state);

/// Runs a stage.
StageResult runStage(RoadStage stage, RoadState& state);

}  // namespace tessera
