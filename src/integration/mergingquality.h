// MergingQuality: agreement of equivalent observations, overall, by resolution shell and by frame.
#pragma once

#include "integration/observation.h"
#include "integration/scaling.h"
#include "records/cellparameters.h"

#include <optional>
#include <vector>

namespace tessera {

/// The figures of one shell, or of all together. Figures that the data do not determine are not finite.
struct ShellQuality {
    double dfDMax = 0;  ///< Å, inner limit
    double dfDMin = 0;  ///< Å, outer limit
    int nObserved = 0;  ///< observations used
    int nUnique = 0;
    int nPossible = 0;          ///< unique reflections that exist in the shell
    double dfCompleteness = 0;  ///< 0 to 1
    double dfMultiplicity = 0;
    double dfIOverSigma = 0;  ///< mean over the unique reflections
    double dfRInt = 0;        ///< Rint = Rmerge, over groups of at least two observations
    double dfRMeas = 0;
    double dfRPim = 0;
    double dfCcHalf = 0;
};

/// A unique reflection with its merged intensity.
struct MergedReflection {
    std::array<int, 3> anIndex = {};  ///< conventional setting, in the asymmetric unit of reciprocal space
    double dfIntensity = 0;
    double dfSigma = 0;
    int nObserved = 0;
};

/// The figures of one frame.
struct FrameQuality {
    int nObserved = 0;
    double dfScale = 1;
    double dfRInt = 0;  ///< mean deviation from the merged intensities, divided by their mean
    double dfIOverSigma = 0;
};

/// The result of judgeMerging().
struct MergingQuality {
    ShellQuality overall;
    std::vector<ShellQuality> listShell;  ///< from low to high resolution, of equal volume
    std::vector<FrameQuality> listFrame;
    std::vector<MergedReflection> listMerged;
    double dfWilsonB = 0;                           ///< Å²; not finite if no line can be fitted
    std::vector<std::array<double, 2>> listWilson;  ///< points of the Wilson plot, see WilsonPlot::listPoint
    /// Completeness of the first 1, 2, 3 … frames of the series: one per frame.
    std::vector<double> listCompletenessByFrame;
};

/// Merges the observations and computes the statistics of their agreement.
/// @param cell     in the setting of the symmetry
/// @param dfDMin   resolution limit, Å; 0: that of the observations
MergingQuality judgeMerging(const std::vector<Observation>& listObservation,
                            const ObservationSymmetry& symmetry, const CellParameters& cell, int nFrames,
                            double dfDMin = 0, int nShells = 10);

}  // namespace tessera
