// Lattice evidence: how certain it is that points are on a lattice and not there by chance.
#pragma once

#include "lattice/latticefit.h"

namespace tessera {

/// The evidence for a lattice: an upper bound, as −ln p, for the probability p that so many points fit by
/// chance. It is the number of points times the divergence of the observed share from that expected by
/// chance, and 0 where no more points fit than expected.
/// Source: Chernoff (1952), Ann. Math. Stat. 23, 493 (bound of the binomial tail).
double evidenceOf(const LatticeFit& fit);

/// The same, counting reflections instead of points, since a reflection found on several frames is only one
/// observation.
double evidenceOf(const LatticeFit& fit, const LatticeBasis& basis, const LatticePoints& listPoint,
                  double dfTolerance = g_dfLatticeTolerance);

/// In how many dimensions the points that fit extend, 0 to 3. A dimension counts if the extent along it is
/// at least a fiftieth of the greatest one, since thin slices of reciprocal space are measured, too.
int dimensionsOfFit(const LatticeBasis& basis, const LatticePoints& listPoint,
                    double dfTolerance = g_dfLatticeTolerance);

/// The least evidence for an orientation of a known cell. Some 10⁷ orientations can be distinguished, ln
/// 10⁷ = 16, and the rest makes one error in 10⁴.
constexpr double g_dfEvidenceOfOrientation = 25;

/// The least evidence for an orientation of a cell that was fitted within a few per cent and degrees: for
/// each of the six numbers some five values can be distinguished, ln 5⁶ = 10.
constexpr double g_dfEvidenceOfFreeOrientation = 35;

/// The least evidence for a lattice of any cell: for each of three edges 10⁶ to 10⁸ vectors can be
/// distinguished, which makes up to ln 10²⁴ = 55.
constexpr double g_dfEvidenceOfLattice = 64;

}  // namespace tessera
