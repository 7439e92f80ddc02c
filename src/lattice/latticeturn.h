// Lattices of the same cell: the turn between two, and the basis that is like a cell that is known.
#pragma once

#include "lattice/latticebasis.h"

#include <optional>

namespace tessera {

/// A turn about an axis. By the symmetry of a lattice many turns lead to the same one: this is the least.
struct LatticeTurn {
    double dfAngle = 0;                               ///< degrees, 0 to 180
    Eigen::Vector3d axis = Eigen::Vector3d::UnitX();  ///< of length 1, in the frame of the bases
    double dfMisfit = 0;                              ///< of the edges after the turn, share of their length
};

/// The turn that carries the first lattice onto the second, where their cells are the same.
///
/// All bases of short vectors of the first are tried, so both may be described by any basis. Of those that
/// fit about as well as the best one, which are the symmetry of the lattice, the least turn is taken.
/// @param dfMostMisfit  of the edges after the best turn, share of their length
std::optional<LatticeTurn> turnBetween(const LatticeBasis& first, const LatticeBasis& second,
                                       double dfMostMisfit = 0.03);

/// The basis of a lattice whose edges are most like those of a cell, in their order, but for a turn.
std::optional<LatticeBasis> describedAs(const LatticeBasis& cell, const LatticeBasis& lattice,
                                        double dfMostMisfit = 0.03);

}  // namespace tessera
