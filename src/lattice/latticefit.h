// LatticeFit: how well a lattice explains points of reciprocal space, beside what chance would give.
#pragma once

#include "lattice/latticebasis.h"

namespace tessera {

/// How far an index may lie from a whole number for a point to fit, for all judgements of lattices.
constexpr double g_dfLatticeTolerance = 0.2;

/// Each point is divided by the cell by itself, so no index follows from a neighbour's.
struct LatticeFit {
    int nPoints = 0;
    int nFitting = 0;       ///< all three indices within the tolerance of whole numbers
    double dfByChance = 0;  ///< share of the points that fit the cell in other orientations, 0 to 1

    double share() const { return nPoints == 0 ? 0 : double(nFitting) / nPoints; }
};

/// Counts the points that fit, and those that fit the cell in some dozens of orientations, the same in each
/// run: points of low d* fit any orientation, so chance gives more than the cube of twice the tolerance.
LatticeFit fitOfLattice(const LatticeBasis& basis, const LatticePoints& listPoint,
                        double dfTolerance = g_dfLatticeTolerance);

}  // namespace tessera
