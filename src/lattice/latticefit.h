// LatticeFit: how well a lattice explains points of reciprocal space, compared with chance.
#pragma once

#include "lattice/latticebasis.h"

namespace tessera {

/// How far the indices of a point may be from whole numbers if the point is to fit.
constexpr double g_dfLatticeTolerance = 0.2;

/// How many points fit a lattice. Each point is indexed on its own, independently of its neighbours.
struct LatticeFit {
    int nPoints = 0;        ///< all points
    int nFitting = 0;       ///< points with all three indices within the tolerance
    double dfByChance = 0;  ///< share of the points that fit the cell in random orientations, 0 to 1

    /// The share of the points that fit, 0 to 1.
    double share() const { return nPoints == 0 ? 0 : double(nFitting) / nPoints; }
};

/// Counts the points that fit, and those that fit the same cell in some dozens of random orientations,
/// which are the same in each run. The share expected by chance is more than the cube of twice the
/// tolerance, as points of low d* fit any orientation.
LatticeFit fitOfLattice(const LatticeBasis& basis, const LatticePoints& listPoint,
                        double dfTolerance = g_dfLatticeTolerance);

}  // namespace tessera
