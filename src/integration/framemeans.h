// Frame means: scales by what frames show on average, before anything is known of the symmetry.
#pragma once

#include "integration/observation.h"

#include <vector>

namespace tessera {

/// One scale for each frame: one over the mean of E², cut at 4, of the 400 usable observations next to it, to
/// a geometric mean of 1 and between 0.1 and 10. All are 1 where there are fewer observations.
///
/// Scales from equivalents need more than Friedel's mates, which cross the sphere within a frame of one
/// another and so tell nothing of frames far apart. Means are known to some hundredths, whatever the
/// symmetry.
std::vector<double> frameMeanScales(const std::vector<Observation>& listObservation, int nFrames);

/// Puts scales of frames into the observations, straight between frames.
void putFrameScales(const std::vector<double>& listScale, std::vector<Observation>& listObservation);

/// Lorentz factor, the scales of the means, and the error model by Friedel's mates: what will do to look for
/// symmetry. The flag of outliers is taken off.
void scaleByFrameMeans(std::vector<Observation>& listObservation, int nFrames);

}  // namespace tessera
