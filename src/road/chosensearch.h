// chosenSearch: how the road searches a cell.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// The method and range that were asked for, or else those of the window or the best to be had. A range that
/// nobody gave a part of is left to the search (m_bAutoRange).
CellHuntingParameters chosenSearch(const RoadState& state);

}  // namespace tessera
