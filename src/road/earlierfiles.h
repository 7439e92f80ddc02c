// Earlier files: reads the results of the stages before the first one that is run.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Reads shifts, peak list and cell, as far as the stages to run need them, from the folder of the results
/// or, if they are not there, from that of the series; then sets the direct beam if the options give it.
///
/// Files beside the project were already read when it was opened. Merged reflections and indices are not
/// stored in files; their stages are run again. Refuses if a file that is needed is missing.
StageResult loadEarlierStages(RoadState& state);

/// Reads a unit-cell file and puts its cell in force.
StageResult loadCell(RoadState& state, const QString& strFileName);

}  // namespace tessera
