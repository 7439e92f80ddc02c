// openSeries: the beginning of the road, from names of files to a data set and a folder for its results.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Opens the project or the images of the options, puts the given geometry in force, makes the folder of the
/// results, reads mask and frames' names, and what the stages before the first one left on the disk
/// (loadEarlierStages()).
///
/// A series that cannot be opened gets its log in a folder of its own nevertheless, under the name that it
/// would have had. Refuses where the series has no frames, or frames that are to be read are not there.
StageResult openSeries(RoadState& state);

}  // namespace tessera
