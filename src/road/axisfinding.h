// Axis finding: the rotation axis of a series from its peaks, before they are mapped.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Finds the axis if that was asked for, or if nobody has told one, and puts it into the data set as its page
/// holds it; what was found goes into the results. Where none is found, the former axis stays in force with a
/// warning, and a series that has no former one cannot go on.
StageResult findAxisWhereAsked(RoadState& state);

}  // namespace tessera
