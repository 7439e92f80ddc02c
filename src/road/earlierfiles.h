// Earlier files: what the stages before the first one left on the disk.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Reads shifts, peak list and cell, as far as the stages to run need them, from the folder of the results
/// and, where it has none, of the series, and puts a given direct beam in force.
///
/// Opening the project has read what lies beside it. Merged reflections and indices have no files that could
/// be read; their stages are run anew. Refuses where a file that is needed is missing.
StageResult loadEarlierStages(RoadState& state);

/// Reads a unit-cell file and puts its cell in force.
StageResult loadCell(RoadState& state, const QString& strFileName);

}  // namespace tessera
