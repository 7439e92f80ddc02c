// NoiseModel: the variance of detector pixels as a function of their counts.
#pragma once

#include <algorithm>
#include <vector>

namespace tessera {

/// The variance is a linear function of the counts: the slope is the gain, due to electron counting
/// statistics, and the offset is the square of the read noise minus gain times dark level.
struct NoiseModel {
    double dfGain = 1;    ///< counts per electron
    double dfOffset = 0;  ///< counts², may be negative

    /// The variance of one pixel, counts². It is at least that of one electron on 250 pixels, since fewer
    /// would not be noticed in the background.
    double variance(double dfCounts) const
    {
        return std::max(dfGain * dfCounts + dfOffset, dfGain * dfGain / 250);
    }
    /// The read noise, counts; 0 if the offset is negative because of the dark level.
    double readNoise() const;
};

/// Mean and variance of the pixels in a patch of background.
struct BackgroundPatch {
    double dfMean = 0;
    double dfVariance = 0;  ///< counts², without the contribution of slopes and curvature
};

/// Fits the line to patches: through the medians of groups by mean, weighted by their variance. If the
/// variance hardly increases with the mean, the line goes through the origin.
NoiseModel noiseOfBackgrounds(std::vector<BackgroundPatch> listPatch);

}  // namespace tessera
