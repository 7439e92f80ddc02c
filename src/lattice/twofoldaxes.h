// Twofold axes of a lattice, exact or nearly so.
#pragma once

#include "lattice/latticebasis.h"

#include <vector>

namespace tessera {

/// A row of the lattice that stands nearly upright on a net plane: half a turn about it brings the lattice
/// to itself, but for the obliquity.
struct TwofoldAxis {
    Eigen::Matrix3i matOperation;  ///< on columns of coordinates along a, b, c
    double dfObliquity = 0;        ///< degrees between the row and the normal of the plane
};

/// All twofold axes with an obliquity of at most `dfMaxObliquity` degrees, the best first. Indices of rows
/// and planes go up to 2, which is enough for a reduced cell.
/// @param reduced  rows a, b, c of a reduced cell
/// Source: Le Page (1982), J. Appl. Cryst. 15, 255–259.
std::vector<TwofoldAxis> twofoldAxes(const LatticeBasis& reduced, double dfMaxObliquity);

}  // namespace tessera
