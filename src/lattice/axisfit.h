// AxisFit: rotation axis, lattice and curvature of the Ewald sphere, refined together against the peaks.
#pragma once

#include "lattice/flatpeak.h"

#include <optional>

namespace tessera {

/// The result of fitAxis().
struct AxisFit {
    double dfAzimuth = 0;       ///< azimuth of the rotation axis, degrees
    double dfAzimuthError = 0;  ///< degrees, standard error
    /// Curvature of the surface on which the peaks lie, in units of that of the Ewald sphere: 1 for the
    /// right sense of rotation, −1 for the opposite sense, for which flat patterns are those of the
    /// inverted crystal.
    double dfCurvature = 0;
    double dfCurvatureError = 0;                ///< standard error
    LatticeBasis basis = LatticeBasis::Zero();  ///< refined basis
    int nFitting = 0;                           ///< peaks used in the last round
    int nPeaks = 0;                             ///< all peaks that were given
};

/// Refines axis, basis and curvature by Gauss-Newton least squares of the points against the lattice points
/// next to them, which are determined anew in each round. An error of the basis gives errors of opposite
/// signs at opposite points and an error of the curvature gives equal ones, so neither can hide the other.
/// Nor can a delay or an offset of the tilts hide the curvature.
///
/// The standard errors take into account that peaks of one reflection on several frames have a common
/// error: sums over reflections are used in place of sums over peaks. Source: White (1980), Econometrica
/// 48, 817.
/// @param dfAzimuth    where the fit begins, degrees
/// @param dfTolerance  of each index
/// @return nothing where the peaks do not determine all unknowns
std::optional<AxisFit> fitAxis(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                               double dfAzimuth, const LatticeBasis& basis, double dfTolerance);

}  // namespace tessera
