// Frame means: scales derived from the mean intensity of each frame, without knowledge of the symmetry.
#pragma once

#include "integration/observation.h"

#include <vector>

namespace tessera {

/// The scale of each frame: the inverse of the mean E² on it, normalized to a geometric mean of 1. All scales
/// are 1 with fewer than 100 observations, or if the mean varies no more than by chance.
///
/// The mean of E² over n reflections has a relative error of about 1 / sqrt(n), since E² scatters as widely
/// as its mean; scales taken frame by frame would carry this error into the intensities. The curve over the
/// frames is therefore a smooth random walk, whose step is the most likely one by the data, and it is used
/// only if it is twenty times as likely as a straight line.
///
/// Scales from equivalents need more symmetry than Friedel mates, which cross the Ewald sphere within a frame
/// of one another and so do not relate distant frames. Means need no symmetry.
std::vector<double> frameMeanScales(const std::vector<Observation>& listObservation, int nFrames);

/// Sets the scales of the observations, interpolated linearly between frames.
void putFrameScales(const std::vector<double>& listScale, std::vector<Observation>& listObservation);

/// Preliminary scaling for the search of the symmetry: Lorentz factor, scales from frame means, and the error
/// model by Friedel mates. Outlier flags are cleared except on faded frames (fadedframes.h).
void scaleByFrameMeans(std::vector<Observation>& listObservation, int nFrames);

}  // namespace tessera
