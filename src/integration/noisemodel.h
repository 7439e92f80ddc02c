// NoiseModel: how much the pixels of a detector scatter at a level of counts.
#pragma once

#include <algorithm>
#include <vector>

namespace tessera {

/// Variance as a straight line of the counts: gain from the statistics of electrons, and an offset, which is
/// the square of the read noise less gain times what the detector counts in the dark.
struct NoiseModel {
    double dfGain = 1;    ///< counts per electron
    double dfOffset = 0;  ///< counts², may be negative

    /// Of one pixel, counts². Where next to nothing is counted, one electron on some 250 pixels is not seen.
    double variance(double dfCounts) const
    {
        return std::max(dfGain * dfCounts + dfOffset, dfGain * dfGain / 250);
    }
    /// Counts; 0 where the dark level hides it.
    double readNoise() const;
};

/// A patch of background: mean of its pixels and their variance.
struct BackgroundPatch {
    double dfMean = 0;
    double dfVariance = 0;  ///< without what bends or slopes
};

/// The line through the patches: medians of groups by mean, weighted by their variance. Where the variance
/// hardly grows with the mean it runs through the origin.
NoiseModel noiseOfBackgrounds(std::vector<BackgroundPatch> listPatch);

}  // namespace tessera
