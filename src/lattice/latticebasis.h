// Lattice basis: bases of direct space in double precision.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/cellparameters.h"

#include <Eigen/Dense>

#include <vector>

namespace tessera {

/// Points of reciprocal space, Å⁻¹, in the frame of the crystal at tilt 0 (x rotation axis, z beam).
using LatticePoints = std::vector<Eigen::Vector3d>;

/// The rows are a, b, c in Å in the same frame: basis * point gives the indices h, k, l as real numbers.
using LatticeBasis = Eigen::Matrix3d;

/// The direct basis of a*, b*, c*. Co-planar vectors give numbers that are not finite.
LatticeBasis latticeBasisOf(const ReciprocalBasis& basis);

/// The reciprocal basis of a direct one, rounded to single precision.
ReciprocalBasis reciprocalBasisOf(const LatticeBasis& basis);

/// The cell of a basis: lengths in Å and angles in degrees.
CellParameters cellOf(const LatticeBasis& basis);

/// A right-handed basis of the same lattice with vectors about as short as possible, in order of length.
/// Multiples of the shorter vectors are subtracted from each vector until none gets shorter.
LatticeBasis shortestBasis(LatticeBasis basis);

/// The distance of the worst index of a point from a whole number, 0 to 0.5.
double distanceFromWhole(const LatticeBasis& basis, const Eigen::Vector3d& point);

/// Refines a basis by least squares against the whole numbers next to the indices, in some rounds. Only
/// points whose indices are all within the tolerance are used.
/// @return the basis as it was when the points do not determine it, or when it would collapse
LatticeBasis refinedBasis(const LatticeBasis& basis, const LatticePoints& listPoint, double dfTolerance);

}  // namespace tessera
