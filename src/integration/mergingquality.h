// MergingQuality: how well equivalent observations agree, as a whole, by shell and by frame.
#pragma once

#include "integration/observation.h"
#include "integration/scaling.h"
#include "records/cellparameters.h"

#include <optional>
#include <vector>

namespace tessera {

/// The numbers of one shell, or of all. Those that the data do not tell are not finite.
struct ShellQuality {
    double dfDMax = 0;  ///< Å, inner limit
    double dfDMin = 0;  ///< Å, outer limit
    int nObserved = 0;  ///< observations used
    int nUnique = 0;
    int nPossible = 0;          ///< unique reflections that there are
    double dfCompleteness = 0;  ///< 0 to 1
    double dfMultiplicity = 0;
    double dfIOverSigma = 0;  ///< mean over the unique reflections
    double dfRInt = 0;        ///< Rint = Rmerge, over groups of two and more
    double dfRMeas = 0;
    double dfRPim = 0;
    double dfCcHalf = 0;
};

/// One unique reflection, merged.
struct MergedReflection {
    std::array<int, 3> anIndex = {};  ///< conventional setting, in the asymmetric unit of reciprocal space
    double dfIntensity = 0;
    double dfSigma = 0;
    int nObserved = 0;
};

struct FrameQuality {
    int nObserved = 0;
    double dfScale = 1;
    double dfRInt = 0;  ///< mean deviation from the merged intensities over their mean
    double dfIOverSigma = 0;
};

struct MergingQuality {
    ShellQuality overall;
    std::vector<ShellQuality> listShell;  ///< from low to high resolution, of equal volume
    std::vector<FrameQuality> listFrame;
    std::vector<MergedReflection> listMerged;
    double dfWilsonB = 0;                           ///< Å²; not finite where no line fits
    std::vector<std::array<double, 2>> listWilson;  ///< (sin θ/λ)², Å⁻²; logarithm of mean I over sum of f²
    /// Completeness that this turn gives when the series is cut to its first n frames: one per frame.
    std::vector<double> listCompletenessByFrame;
};

/// @param cell     of the setting of the symmetry
/// @param dfDMin   Å, resolution limit; 0: that of the observations
MergingQuality judgeMerging(const std::vector<Observation>& listObservation,
                            const ObservationSymmetry& symmetry, const CellParameters& cell, int nFrames,
                            double dfDMin = 0, int nShells = 10);

}  // namespace tessera
