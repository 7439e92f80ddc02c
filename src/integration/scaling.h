// Scaling: brings observations to a common scale, rejects outliers and adjusts the standard deviations.
#pragma once

#include "integration/observation.h"
#include "records/runreport.h"

#include <gemmi/symmetry.hpp>

#include <QString>

#include <vector>

namespace tessera {

/// Whether h k l and its Friedel mate -h -k -l count as equivalent.
enum class FriedelMates { Equivalent, Apart };

/// The symmetry under which observations are equivalent, and the transformation of their indices to the
/// setting of its operations.
struct ObservationSymmetry {
    /// Rows: the conventional axes in terms of the axes of the cell in force, times the denominator. Indices
    /// transform in the same way, see conventionalIndex().
    std::array<std::array<int, 3>, 3> anTransform = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    int nDenominator = 1;  ///< above 1 if the cell in force is centred and differs from the conventional one
    gemmi::GroupOps ops;   ///< operations of the Laue class in the conventional setting, centring included
};

/// h, k, l in the conventional setting. They are whole numbers for reflections that the centring of the cell
/// in force allows; for others they are rounded towards 0.
std::array<int, 3> conventionalIndex(const ObservationSymmetry& symmetry, const std::array<int, 3>& anIndex);

/// What scaleObservations() does.
struct ScalingOptions {
    bool bScale = true;        ///< fit a scale that varies smoothly along the series
    bool bDecay = true;        ///< fit a decay with resolution that varies smoothly along the series
    double dfRejection = 3.5;  ///< outliers deviate from the median of their group by so many sigmas
    FriedelMates mates = FriedelMates::Equivalent;
};

/// An observation that was rejected.
struct RejectedObservation {
    int nObservation = 0;    ///< index in the list of observations
    double dfDeviation = 0;  ///< signed, in sigmas; 0 if it was rejected because of its frame
    QString strWhy;
};

/// The result of scaleObservations().
struct ScalingResult {
    std::vector<double> listFrameScale;  ///< one per frame; geometric mean 1 over frames with reflections
    std::vector<double> listFrameDecay;  ///< B of each frame, Å²; 0 for the first
    double dfErrorA = 1;                 ///< A in sigma'² = A²(sigma² + (B·I)²)
    double dfErrorB = 0;                 ///< B in the same
    std::vector<RejectedObservation> listRejected;
    int nUsed = 0;  ///< number of observations to which the scales were fitted
};

/// Applies Lorentz factor, scale, decay and error model to the observations and flags outliers; see
/// lorentzfactor.h, scalecurves.h, errormodel.h and outlierrejection.h.
///
/// Outliers are judged by the width of the core of the deviations, as multiple scattering causes long tails;
/// the sigmas are then adjusted to the observations that remain. Observations on frames that show less than a
/// fifth of the median frame are rejected, too. In the Laue class -1, whose equivalents lie on the same
/// frames, the scales are derived from the mean intensities of the frames (framemeans.h), without decay.
ScalingResult scaleObservations(std::vector<Observation>& listObservation,
                                const ObservationSymmetry& symmetry, int nFrames,
                                const ScalingOptions& options, CRunReport& report);

}  // namespace tessera
