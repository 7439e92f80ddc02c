// Bases of direct space in double precision, as the search for a lattice and its fits hold them.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/cellparameters.h"

#include <Eigen/Dense>

#include <vector>

namespace tessera {

/// Points of reciprocal space, Å⁻¹, in the frame of the crystal at tilt 0 (x rotation axis, z beam).
using LatticePoints = std::vector<Eigen::Vector3d>;

/// The rows are a, b, c in Å, in the same frame: basis * point gives the real indices h, k, l.
using LatticeBasis = Eigen::Matrix3d;

/// The direct basis that is dual to a*, b*, c*. Not tested: co-planar vectors give numbers that are not
/// finite.
LatticeBasis latticeBasisOf(const ReciprocalBasis& basis);

/// The way back, rounded to single precision.
ReciprocalBasis reciprocalBasisOf(const LatticeBasis& basis);

/// Lengths in Å and angles in degrees.
CellParameters cellOf(const LatticeBasis& basis);

/// A right-handed basis of the same lattice whose vectors are about as short as they can be, in order of
/// length: each is freed of the shorter ones until none gets shorter.
LatticeBasis shortestBasis(LatticeBasis basis);

/// Real indices of a point, and how far the worst of the three lies from a whole number.
double distanceFromWhole(const LatticeBasis& basis, const Eigen::Vector3d& point);

/// Least squares of a basis against the whole numbers next to the indices of all points that lie within the
/// tolerance, some rounds long.
/// @return the basis as it was when the points do not determine it, or when it would collapse
LatticeBasis refinedBasis(const LatticeBasis& basis, const LatticePoints& listPoint, double dfTolerance);

}  // namespace tessera
