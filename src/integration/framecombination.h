// FrameCombination: the intensity of an observation from all frames on which it was recorded.
#pragma once

#include "integration/noisemodel.h"
#include "integration/observation.h"
#include "integration/rockingcurve.h"
#include "integration/spotmeasure.h"

#include <vector>

namespace tessera {

/// The intensity of an observation by two methods, both extrapolated to the whole spot and the whole rocking
/// curve, counts. A sigma of 0 means that the method gave no result.
struct PassageMeasure {
    double dfSum = 0;       ///< by summation over the discs
    double dfSumSigma = 0;  ///< standard deviation of dfSum
    double dfFit = 0;       ///< by profile fitting
    double dfFitSigma = 0;  ///< standard deviation of dfFit
};

/// Computes both intensities, and sets flags, background and recorded fraction of the observation.
///
/// Summation: the sum over the discs divided by the fraction of the spot and of its rocking curve that the
/// frames recorded; its variance includes the background, the fitted plane and the counts. If the crystal
/// stands still during the exposures and the reflection is strong enough, total and centre of its rocking
/// curve are fitted instead. Profile fitting: the average of the fits on the single frames, weighted by the
/// background alone (Kabsch 1988, J. Appl. Cryst. 21, 916; Pflugrath 1999, Acta Cryst. D55, 1718), so that
/// the weights do not depend on the counts and the result is unbiased.
/// @param listMeasure  the spot on each frame of the passage
/// @param listBlank    by frame of the series: 1 if the frame is blank, missing or unreadable and is left out
/// @param curve        rocking curve of the series
/// @return sigmas of 0 if less than a tenth of the reflection was recorded
PassageMeasure combineFrames(const std::vector<SpotMeasure>& listMeasure, const std::vector<char>& listBlank,
                             const NoiseModel& noise, const RockingCurve& curve, Observation& observation);

/// Chooses one of the two intensities for each observation: the fit, brought to the scale of the sums, if its
/// sigma is smaller, where the sigma includes the disagreement of fits and sums of strong reflections beyond
/// noise. Observations whose sum is the more precise of the two, and whose fit disagrees with it far more
/// than usual, get FlagBadProfile; those without a finite intensity get FlagNotFinite.
/// @param listMeasure      one per observation
/// @param bProfileFit      false: sums are used throughout
/// @param listObservation  takes intensities, sigmas and flags
void chooseMeasures(const std::vector<PassageMeasure>& listMeasure, bool bProfileFit,
                    std::vector<Observation>& listObservation);

}  // namespace tessera
