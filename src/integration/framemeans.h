// Frame means: scales by what frames show on average, before anything is known of the symmetry.
#pragma once

#include "integration/observation.h"

#include <vector>

namespace tessera {

/// One scale for each frame: one over the mean of E² there, to a geometric mean of 1. All are 1 where there
/// are fewer than 100 observations, and where the mean changes no more than by chance.
///
/// The mean over n reflections is known to about 1 / sqrt(n) and no better, as E² is spread as widely as its
/// mean: a curve through each frame would bring that into intensities that are right. The curve is one of
/// smooth walks, as free as is likeliest by the data, and taken only if it is twenty times as likely as a
/// straight line.
///
/// Scales from equivalents need more than Friedel's mates, which cross the sphere within a frame of one
/// another and so tell nothing of frames far apart. Means ask for no symmetry.
std::vector<double> frameMeanScales(const std::vector<Observation>& listObservation, int nFrames);

/// Puts scales of frames into the observations, straight between frames.
void putFrameScales(const std::vector<double>& listScale, std::vector<Observation>& listObservation);

/// Lorentz factor, the scales of the means, and the error model by Friedel's mates: what will do to look for
/// symmetry. The flag of outliers is taken off, but for those on frames that have faded (fadedframes.h).
void scaleByFrameMeans(std::vector<Observation>& listObservation, int nFrames);

}  // namespace tessera
