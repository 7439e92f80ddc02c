// Direction lengths: for each direction of a hemisphere, the length with the strongest Fourier sum.
#pragma once

#include "lattice/directionsearch.h"

#include <vector>

namespace tessera {

/// A direction of a hemisphere. Numbers 0 to nDirections − 1 give directions evenly distributed over z > 0,
/// on a spiral of the golden ratio.
Eigen::Vector3d hemisphereDirection(int nIndex, int nDirections);

/// Finds a vector of real space, Å, for each direction. The vector with the strongest Fourier sum comes
/// first.
///
/// The points are projected onto the direction into a histogram, and a transform of the histogram gives the
/// sums for all lengths. Points that are not finite or farther out than `dfReach` are left out.
/// @param dfReach  length of the longest point, Å⁻¹
/// @param fnGoOn   asked now and then whether to go on
/// @return empty where fnGoOn has ended the search, or where no length is in the range of the options
std::vector<Eigen::Vector3d> strongestLengths(const LatticePoints& listPoint, double dfReach,
                                              const DirectionSearchOptions& options,
                                              const std::function<bool()>& fnGoOn);

}  // namespace tessera
