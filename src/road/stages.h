// The stages of the road, each a function of the state that the stage before it left.
#pragma once

#include "road/roadstate.h"

namespace tessera {

// All stages round the parameters as the pages of the window do, leave what they found in the data set and in
// the results, and say the rest to the report. A stage that does not finish leaves its files on the disk as
// they were.

/// Drift and direct beam, from the region that is given or found on the frames; writes the shift file.
StageResult runShiftStage(RoadState& state);

/// The peaks of all frames, with the threshold that is given or comes from the noise; writes the peak list.
StageResult runPeakStage(RoadState& state);

/// Maps the peaks into reciprocal space and merges those within the limits, all of them or one group.
StageResult runMergeStage(RoadState& state);

/// The cell of the merged reflections, or that of a file; writes the unit-cell file, unless it is that file.
StageResult runCellStage(RoadState& state);

/// Indexes the merged reflections, refines the cell from their d* and judges the result. The result files
/// appear together, and only when the road starts at this stage or before it.
StageResult runIndexStage(RoadState& state);

/// Axis, direct beam, distortions and cell, fitted together to the indexed peaks; writes the refined project
/// and cell. Where there is nothing to refine it says so and leaves all as it was.
StageResult runGeometryStage(RoadState& state);

/// The intensities of all reflections that cross the Ewald sphere, predicted from the refined geometry or,
/// where there is none, from that in force; scaled, merged and judged. Writes the files of structure
/// solution. Where the frames give no intensities, or the cell is not worth it, it says so and leaves all as
/// it was.
StageResult runIntegrateStage(RoadState& state);

/// The cell from the distances of indexed peaks on one frame, with the positions as hunted and as fitted;
/// nothing but log and results tells it.
StageResult runRefineStage(RoadState& state);

/// The stage of that name.
StageResult runStage(RoadStage stage, RoadState& state);

}  // namespace tessera
