// Direction lengths: for each direction of a hemisphere, the length with the strongest Fourier sum.
#pragma once

#include "lattice/directionsearch.h"

#include <algorithm>
#include <vector>

namespace tessera {

/// A direction of a hemisphere, as a unit vector. Numbers 0 to nDirections − 1 give directions evenly
/// distributed over z > 0, on a spiral of the golden ratio. One hemisphere is enough, as the opposite
/// direction has the same Fourier sums.
/// Source: Swinbank & Purser (2006), Q. J. R. Meteorol. Soc. 132, 1769–1793.
Eigen::Vector3d hemisphereDirection(int nIndex, int nDirections);

/// The shortest length that is looked at, Å. At shorter ones the transform shows the outline of the cloud of
/// points instead of its lattice: of a ball that is evenly filled with points, the Fourier sum beyond
/// 1.2 / radius is less than 4 % of the number of points.
/// @param dfReach  length of the longest point, Å⁻¹
inline double shortestLength(const DirectionSearchOptions& options, double dfReach)
{
    return std::max(options.dfShortest, 1.2 / dfReach);
}

/// Finds for each direction the vector of real space, Å, in the frame of the points, whose length has the
/// strongest Fourier sum. The vector with the strongest sum of all comes first.
///
/// The points are projected onto the direction into a histogram, and a transform of the histogram gives the
/// sums for all lengths. Points that are not finite or farther out than `dfReach` are left out, and lengths
/// below shortestLength().
/// @param dfReach  length of the longest point, Å⁻¹
/// @param fnGoOn   asked now and then whether to go on
/// @return empty where fnGoOn has ended the search, or where no length is in the range of the options
std::vector<Eigen::Vector3d> strongestLengths(const LatticePoints& listPoint, double dfReach,
                                              const DirectionSearchOptions& options,
                                              const std::function<bool()>& fnGoOn);

}  // namespace tessera
