// Beam search: the direct beam that makes peaks lie on a lattice whose vectors are known.
#pragma once

#include "lattice/flatpeak.h"

#include <optional>

namespace tessera {

struct BeamMove {
    double dfX = 0;          ///< pixels to add to the direct beam of all frames, columns
    double dfY = 0;          ///< rows
    double dfSharpness = 0;  ///< mean cosine of 2π times the indices there; 1 for a perfect lattice
};

/// Tries places of the direct beam on a grid round the present one, then closer round the best. Differences
/// of peaks do not see the beam, so that a cell that was found from these is right with a wrong one; the
/// peaks then miss its lattice by one vector of the frame that turns with the tilts.
///
/// The grid is as fine as the longest edge needs, and reaches five spots of that edge each way: a beam that
/// is farther off is not found. Peaks of a few tilts may fit as well one spot aside.
/// @param dfAzimuth  of the rotation axis, degrees
/// @return none without peaks, or where the basis leaves no grid to try
std::optional<BeamMove> searchBeam(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                                   double dfAzimuth, const LatticeBasis& basis);

}  // namespace tessera
