// Edge search: finds lattice vectors of a known length from projections of the points onto directions.
#pragma once

#include "lattice/latticebasis.h"

#include <vector>

namespace tessera {

/// The finite points except the origin, the nearest to it first. If there are more than nMost, they are
/// thinned evenly.
LatticePoints thinnedNearFirst(const LatticePoints& listPoint, size_t nMost);

/// Finds vectors of about a given length whose scalar products with the points are close to whole numbers:
/// some dozens at most, the best first. Of a vector and its opposite only one is returned.
///
/// The spacing of directions that is needed is inversely proportional to length times d*. So the search
/// begins with the points near the origin, for which some ten thousand directions are enough, and refines
/// what it finds with more and more distant points.
/// @param dfTolerance    of the length, as a share of it
/// @param listNearFirst  from thinnedNearFirst()
std::vector<Eigen::Vector3d> findEdges(double dfLength, double dfTolerance,
                                       const LatticePoints& listNearFirst);

}  // namespace tessera
