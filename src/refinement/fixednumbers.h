// Log lines and reasons for the numbers of the geometry that were not refined.
#pragma once

#include "refinement/geometryrefinement.h"

#include <vector>

namespace tessera {

/// Writes a line of the log for each fixed number, with the reason.
void tellFixed(const std::vector<FixedNumber>& listFixed, CRunReport& report);

/// Adds to the fixed numbers of a result those that are fixed by construction: stretching or ellipse,
/// whichever the other one replaces, and the offset of the tilts.
void noteOthers(GeometryRefinement& result);

}  // namespace tessera
