// Twofold axes: the exact and approximate twofold axes of a lattice.
#pragma once

#include "lattice/latticebasis.h"

#include <vector>

namespace tessera {

/// A row of the lattice that is nearly perpendicular to a net plane. A rotation by 180° about it takes the
/// lattice to itself, up to the obliquity.
struct TwofoldAxis {
    Eigen::Matrix3i matOperation;  ///< acts on columns of coordinates along a, b, c
    double dfObliquity = 0;        ///< angle between the row and the normal of the plane, degrees
};

/// Finds all twofold axes with an obliquity of at most `dfMaxObliquity` degrees, the best first. The
/// indices of rows and planes go up to 2, which is enough for a reduced cell.
/// @param reduced  rows a, b, c of a reduced cell
/// Source: Le Page (1982), J. Appl. Cryst. 15, 255–259.
std::vector<TwofoldAxis> twofoldAxes(const LatticeBasis& reduced, double dfMaxObliquity);

}  // namespace tessera
