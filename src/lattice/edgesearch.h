// Search for lattice vectors of a known length by the projections of points on directions.
#pragma once

#include "lattice/latticebasis.h"

#include <vector>

namespace tessera {

/// The points that are numbers and not the origin, the nearest to it first; above a number of them evenly
/// thinned.
LatticePoints thinnedNearFirst(const LatticePoints& listPoint, size_t nMost);

/// Vectors of about a length whose products with the points lie near whole numbers, the best first, at the
/// most some dozens. A vector stands for its opposite, too.
///
/// How fine the directions have to be is told by length times d*. So the search looks at the points near the
/// origin as far as some ten thousand directions reach, and what it finds is refined further and further out.
/// @param dfTolerance    share of the length
/// @param listNearFirst  thinnedNearFirst()
std::vector<Eigen::Vector3d> findEdges(double dfLength, double dfTolerance,
                                       const LatticePoints& listNearFirst);

}  // namespace tessera
