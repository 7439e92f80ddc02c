// Axis finding: the rotation axis of a series from its peaks, before they are mapped.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Finds the rotation axis if that was requested or if no axis is known, and puts it into the data set,
/// rounded as on its page, and into the results. If no axis is found, the former one is kept with a warning;
/// a series without a former axis cannot go on.
StageResult findAxisWhereAsked(RoadState& state);

}  // namespace tessera
