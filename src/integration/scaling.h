// Scaling: observations brought to one scale, outliers found, sigmas made true.
#pragma once

#include "integration/observation.h"
#include "records/runreport.h"

#include <gemmi/symmetry.hpp>

#include <QString>

#include <vector>

namespace tessera {

/// The operations by which observations are equivalent, and how their indices become those of the setting
/// that the operations are for.
struct ObservationSymmetry {
    std::array<std::array<int, 3>, 3> anTransform = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    ///< rows: the conventional axes along those of the cell in force, times the denominator; indices
    ///< transform alike: see conventionalIndex()
    int nDenominator = 1;  ///< above 1 where the cell in force is a centred one and the setting is another
    gemmi::GroupOps ops;   ///< of the Laue class in the conventional setting, centring included
};

/// h, k, l in the conventional setting. Whole where the reflection is one that the centring of the cell in
/// force allows; others are rounded towards 0.
std::array<int, 3> conventionalIndex(const ObservationSymmetry& symmetry, const std::array<int, 3>& anIndex);

struct ScalingOptions {
    bool bScale = true;          ///< a scale smooth in the frame number
    bool bDecay = true;          ///< and a fall-off with resolution, smooth in the frame number
    double dfRejection = 3.5;    ///< deviations of its group's median, in sigmas of the error model
    int nFriedelPairsApart = 0;  ///< 1: Friedel's mates are not equivalent
};

/// An observation that was rejected.
struct RejectedObservation {
    int nObservation = 0;    ///< place in the list
    double dfDeviation = 0;  ///< in sigmas, signed; 0: for its frame, not for its intensity
    QString strWhy;
};

struct ScalingResult {
    std::vector<double> listFrameScale;  ///< one per frame, geometric mean 1 over those that hold reflections
    std::vector<double> listFrameDecay;  ///< Å², B of the frame, 0 at the first
    double dfErrorA = 1;                 ///< sigma'² = A²(sigma² + (B·I)²)
    double dfErrorB = 0;
    std::vector<RejectedObservation> listRejected;
    int nUsed = 0;  ///< observations that the scales are from
};

/// Puts Lorentz factor, scale, decay and error model into the observations, and the flag of the outliers: see
/// lorentzfactor.h, scalecurves.h, errormodel.h and outlierrejection.h. Rejected is against the width that
/// most deviations have, as multiple scattering makes tails; the sigmas then match what is left. Observations
/// of frames that show less than a fifth of the median frame are rejected, too. In the Laue class -1, whose
/// equivalents lie on the same frames, scales come from the means of the frames (framemeans.h), without
/// decay.
ScalingResult scaleObservations(std::vector<Observation>& listObservation,
                                const ObservationSymmetry& symmetry, int nFrames,
                                const ScalingOptions& options, CRunReport& report);

}  // namespace tessera
