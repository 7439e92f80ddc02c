// AxisFit: rotation axis, basis and curvature of the sphere, refined together against peaks on frames.
#pragma once

#include "lattice/flatpeak.h"

#include <optional>

namespace tessera {

struct AxisFit {
    double dfAzimuth = 0;       ///< degrees, near the one that the fit began with
    double dfAzimuthError = 0;  ///< degrees, standard error
    /// Of the surface that the peaks lie on, in that of the Ewald sphere: 1 for the right sense of rotation,
    /// −1 for the opposite one, whose flat patterns are those of the inverted crystal.
    double dfCurvature = 0;
    double dfCurvatureError = 0;  ///< standard error
    LatticeBasis basis = LatticeBasis::Zero();
    int nFitting = 0;  ///< peaks that the last round used
    int nPeaks = 0;
};

/// Least squares of the points against the whole indices next to theirs, by Gauss and Newton, with the
/// indices anew in each round. The basis makes errors that turn their sign with the point, the curvature one
/// that does not, so neither hides the other, nor does a lag of the tilts or a zero of theirs hide the
/// curvature.
///
/// The errors allow for the peaks of one reflection on several frames to err together: sums over reflections
/// stand in the place of those over peaks. White (1980), Econometrica 48, 817.
/// @param dfTolerance  of each index
/// @return none where the peaks do not determine all of it
std::optional<AxisFit> fitAxis(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                               double dfAzimuth, const LatticeBasis& basis, double dfTolerance);

}  // namespace tessera
