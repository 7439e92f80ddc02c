// How sure it is that points lie on a lattice, and not there by chance.
#pragma once

#include "lattice/latticefit.h"

namespace tessera {

/// The natural logarithm of 1 over the greatest probability with which chance makes so many points fit: n
/// times the divergence of the share seen from that by chance, 0 where no more fit than that.
/// Source: Chernoff (1952), Ann. Math. Stat. 23, 493 (bound of the binomial tail).
double evidenceOf(const LatticeFit& fit);

/// The same with reflections for points: what was hunted on several frames says no more than once.
double evidenceOf(const LatticeFit& fit, const LatticeBasis& basis, const LatticePoints& listPoint,
                  double dfTolerance = g_dfLatticeTolerance);

/// How many dimensions the points that fit extend in, 0 to 3. A dimension counts from a fiftieth of the
/// greatest extent on, as thin slices of space are measured, too.
int dimensionsOfFit(const LatticeBasis& basis, const LatticePoints& listPoint,
                    double dfTolerance = g_dfLatticeTolerance);

/// What an orientation of a known cell has to reach: some 10⁷ orientations can be told apart, ln 10⁷ = 16,
/// and the rest makes errors as rare as one in 10⁴.
constexpr double g_dfEvidenceOfOrientation = 25;

/// The same with edges that were fitted within a few per cent and degrees: some five places each of the six
/// numbers, ln 5⁶ = 10.
constexpr double g_dfEvidenceOfFreeOrientation = 35;

/// What a lattice of any cell has to reach: each of three edges has 10⁶ to 10⁸ places that can be told apart,
/// which makes up to ln 10²⁴ = 55.
constexpr double g_dfEvidenceOfLattice = 64;

}  // namespace tessera
