// FrameCombination: what the frames of a passage say together.
#pragma once

#include "integration/noisemodel.h"
#include "integration/observation.h"
#include "integration/rockingcurve.h"
#include "integration/spotmeasure.h"

#include <vector>

namespace tessera {

/// The two ways to measure an observation, both counts of the whole spot and the whole rocking curve.
struct PassageMeasure {
    double dfSum = 0;  ///< from the discs, for the part that they recorded
    double dfSumSigma = 0;
    double dfFit = 0;  ///< from profile and rocking curve
    double dfFitSigma = 0;
};

/// Sums and fits, and puts flags, background and recorded part into the observation.
///
/// Sum: Σ discs / Σ parts, its variance that of the background and its plane and of the counts themselves.
/// A series that stands still while it exposes: the rocking curve is fitted, with its place where the
/// reflection is strong enough to tell it. Fit: each frame's fit of the profile, weighted by what the
/// background leaves it (Kabsch 1988, J. Appl. Cryst. 21, 916; Pflugrath 1999, Acta Cryst. D55, 1718), so
/// that weights do not depend on the counts and the result is without bias.
/// @return sigmas of 0 where less than a tenth was recorded
PassageMeasure combineFrames(const std::vector<SpotMeasure>& listMeasure, const std::vector<char>& listBlank,
                             const NoiseModel& noise, const RockingCurve& curve, Observation& observation);

/// Chooses for all observations: the fit, at the scale of the sums, where its sigma is the smaller one with
/// what fits and sums of strong reflections differ by beyond their noise; flags those whose fit and sum
/// disagree far beyond the others.
void chooseMeasures(const std::vector<PassageMeasure>& listMeasure, bool bProfileFit,
                    std::vector<Observation>& listObservation);

}  // namespace tessera
