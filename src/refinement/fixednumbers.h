// What is said of the numbers that stay fixed.
#pragma once

#include "refinement/geometryrefinement.h"

#include <vector>

namespace tessera {

/// A line for each, with the reason.
void tellFixed(const std::vector<FixedNumber>& listFixed, CRunReport& report);

/// Says what became of stretching and ellipse, one of which stands in the place of the other, and of the
/// offset.
void noteOthers(GeometryRefinement& result);

}  // namespace tessera
