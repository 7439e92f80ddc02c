// chosenSearch: the parameters of the cell search of a road.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// The method and range of the options. Without a method, it is that of the window with --window-defaults,
/// else the best of both. A range of which neither end was given is chosen by the search (m_bAutoRange).
CellHuntingParameters chosenSearch(const RoadState& state);

}  // namespace tessera
