// openSeries: the first part of a road, which reads the input and prepares the folder of the results.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Opens the project or the images of the options, puts the given geometry in force, creates the folder of
/// the results, and reads the mask and the files of earlier stages (loadEarlierStages()).
///
/// If the series cannot be opened, its log is still written to the folder of the results under the usual
/// name. Refuses if the series has no frames, or if frames that are needed are missing.
StageResult openSeries(RoadState& state);

}  // namespace tessera
