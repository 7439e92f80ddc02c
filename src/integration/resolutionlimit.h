// resolutionLimit: how far reflections are seen.
#pragma once

#include "integration/observation.h"

#include <vector>

namespace tessera {

/// The d* in Å⁻¹ beyond which no shell of equal volume has a mean intensity of half a sigma. All that was
/// predicted where even the last shell has more, or where there are too few to tell.
double resolutionLimit(const std::vector<Observation>& listObservation);

}  // namespace tessera
