// Frame means: scales by what frames show on average, before anything is known of the symmetry.
#pragma once

#include "integration/observation.h"

#include <vector>

namespace tessera {

/// Puts Lorentz factor, scale and error model into the observations, without equivalents beyond Friedel's:
/// the scale of a frame is one over the mean of E², cut at 4, of the 200 usable observations next to it, and
/// lies between 0.1 and 10. The flag of outliers is taken off.
///
/// Scales from equivalents need more than Friedel's mates, which cross the sphere within a frame of one
/// another and so tell nothing of frames far apart. Means are known to a tenth, which will do to look for
/// symmetry.
void scaleByFrameMeans(std::vector<Observation>& listObservation);

}  // namespace tessera
