// Lattice turn: the rotation between two lattices of the same cell, and the basis that matches a known
// cell.
#pragma once

#include "lattice/latticebasis.h"

#include <optional>

namespace tessera {

/// A rotation about an axis. The symmetry of a lattice makes several rotations equivalent; this is the one
/// with the smallest angle.
struct LatticeTurn {
    double dfAngle = 0;                               ///< degrees, 0 to 180
    Eigen::Vector3d axis = Eigen::Vector3d::UnitX();  ///< unit vector in the frame of the bases
    double dfMisfit = 0;  ///< of the edges after the rotation, as a share of their length
};

/// Finds the rotation that takes the first lattice to the second one, if their cells are the same.
///
/// All bases of short vectors of the first lattice are tried, so both lattices may be given by any basis.
/// Among the rotations that fit about as well as the best one, which are equivalent by symmetry, the
/// smallest is returned.
/// @param dfMostMisfit  greatest misfit of the edges after the rotation, as a share of their length
/// @return nothing where the cells differ
std::optional<LatticeTurn> turnBetween(const LatticeBasis& first, const LatticeBasis& second,
                                       double dfMostMisfit = 0.03);

/// The basis of a lattice whose edges match those of a cell in their order, apart from a rotation.
/// @return nothing where no basis does
std::optional<LatticeBasis> describedAs(const LatticeBasis& cell, const LatticeBasis& lattice,
                                        double dfMostMisfit = 0.03);

}  // namespace tessera
