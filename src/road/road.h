// The road: runs the processing of a series from opening to exports without user interaction.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Opens the series and runs the stages and exports of the options, through the same functions as the window.
/// The results, and how the road ended, are in the state afterwards.
///
/// The stages stop at the first that does not finish; the exports go on after one that failed. An exception,
/// such as one for lack of memory, counts as a failure.
void runRoad(RoadState& state);

}  // namespace tessera
