// Beam search: finds the direct beam for which the peaks lie on a known lattice.
#pragma once

#include "lattice/flatpeak.h"

#include <optional>

namespace tessera {

/// A correction of the direct beam.
struct BeamMove {
    double dfX = 0;          ///< to be added to the direct beam of all frames, columns, pixels
    double dfY = 0;          ///< likewise, rows
    double dfSharpness = 0;  ///< mean cosine of 2π times the indices with it; 1 for a perfect lattice
};

/// Tries positions of the direct beam on a grid around the present one, then on a finer grid around the
/// best. Differences of peaks do not depend on the beam, so a cell that was found from differences can be
/// right even if the beam is wrong. The peaks then miss the lattice by a common vector of the frame, which
/// turns with the tilt.
///
/// The step of the grid follows from the longest edge, and the grid extends to five spots of that edge on
/// each side. A beam that is farther off is not found. If the peaks are from a few tilts only, a beam that
/// is off by one spot may fit as well.
/// @param dfAzimuth  of the rotation axis, degrees
/// @return nothing without peaks, or where the basis is unusable
std::optional<BeamMove> searchBeam(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                                   double dfAzimuth, const LatticeBasis& basis);

}  // namespace tessera
