// Direction lengths: for each direction of a hemisphere the length whose Fourier sum is the strongest.
#pragma once

#include "lattice/directionsearch.h"

#include <vector>

namespace tessera {

/// Directions spread evenly over the hemisphere z > 0, on a spiral of the golden ratio.
Eigen::Vector3d hemisphereDirection(int nIndex, int nDirections);

/// Vectors of real space, Å, one of each direction, the strongest Fourier sum first.
///
/// The points are projected on the direction into a histogram, whose transform gives the sum for all lengths.
/// Points that are not finite, or lie further out than the reach, are left out.
/// @param dfReach  length of the longest of the points, Å⁻¹
/// @return empty where the search was ended, or where no length lies in the range of the options
std::vector<Eigen::Vector3d> strongestLengths(const LatticePoints& listPoint, double dfReach,
                                              const DirectionSearchOptions& options,
                                              const std::function<bool()>& fnGoOn);

}  // namespace tessera
