// The road: opening, stages and exports one after the other, without a user to place, tune or look.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Opens the series and runs the stages and exports that the options of the state ask for, each through the
/// same functions as the window. What was found, and how it ended, stands in the results then.
///
/// The stages end with the first that does not finish; an export that fails keeps none of the others back.
/// An exception, such as for memory that is not there, ends the road like a failure.
void runRoad(RoadState& state);

}  // namespace tessera
