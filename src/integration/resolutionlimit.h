// resolutionLimit: the resolution to which reflections are observed.
#pragma once

#include "integration/observation.h"

#include <vector>

namespace tessera {

/// The d* (Å⁻¹) beyond which no shell of equal volume has a mean I/sigma of 0.5 or more. It is the greatest
/// d* of the observations if even the last shell has more, or if there are too few observations.
double resolutionLimit(const std::vector<Observation>& listObservation);

}  // namespace tessera
