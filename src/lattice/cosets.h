// Cosets of a lattice: peaks between its points that demand a longer cell.
#pragma once

#include "lattice/absences.h"

#include <QString>

#include <vector>

namespace tessera {

/// A coset: a place between the points of the reciprocal lattice together with its multiples of the same
/// order. So (1/3, 0, 0) stands for (2/3, 0, 0), too.
struct Coset {
    IndexTriple anNumerator = {0, 0, 0};  ///< numerators of h, k, l, each from 0 to the denominator − 1
    int nDenominator = 1;                 ///< 2 to 5
    int nPoints = 0;                      ///< points in the window of the coset that do not fit the lattice
    double dfByChance = 0;                ///< number of such points expected by chance
    double dfShare = 0;                   ///< nPoints as a share of all points, 0 to 1
    /// Whether the points also occur near the origin and at low indices of each axis, as reflections do.
    /// Points that an error of the geometry brings to the coset occur only at high indices along the worst
    /// axis.
    bool bDemanded = false;
};

/// Finds the cosets with far more points than expected by chance, the clearest first.
///
/// The number expected is the greater of two: the number for an even distribution of the points that do not
/// fit the lattice, and the number from the density around the coset, which is raised when badly known
/// geometry smears the points of the lattice.
/// @param dfTolerance  of an index, at most the default value
std::vector<Coset> findCosets(const LatticeBasis& basis, const LatticePoints& listPoint,
                              double dfTolerance = g_dfCosetTolerance);

/// The shortest basis of the lattice whose reciprocal lattice includes the coset. The volume of the direct
/// cell is multiplied by the order of the coset.
LatticeBasis supercell(const LatticeBasis& basis, const Coset& coset);

/// A lattice after absences and cosets were taken into account.
struct LatticeWithCosets {
    LatticeBasis matBasis;             ///< shortest basis of the resulting primitive lattice
    QString strCentring;               ///< centring of the given basis: centringOf()
    std::vector<Absence> listAbsence;  ///< absences of the given basis
    std::vector<Coset> listTaken;      ///< cosets that became a supercell, each of the lattice before it
    std::vector<Coset> listNamed;      ///< further cosets of the resulting lattice, to be reported only
};

/// Makes the lattice primitive where all its reflections obey a condition, and takes supercells as long as
/// points that do not fit demand them. The basis is refined after each step.
LatticeWithCosets latticeAndCosets(const LatticeBasis& basis, const LatticePoints& listPoint,
                                   double dfTolerance = g_dfCosetTolerance);

/// A sentence such as "11 % of the peaks lie at (1/2, 1/2, 1/2)".
QString cosetText(const Coset& coset);

}  // namespace tessera
