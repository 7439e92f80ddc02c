// Cosets of a lattice: peaks between its points that demand a longer cell.
#pragma once

#include "lattice/absences.h"

#include <QString>

#include <vector>

namespace tessera {

/// A place between the points of the reciprocal lattice, together with its multiples that are of the same
/// order: (1/3, 0, 0) stands for (2/3, 0, 0), too.
struct Coset {
    IndexTriple anNumerator = {0, 0, 0};  ///< of h, k, l, 0 to the denominator less one
    int nDenominator = 1;                 ///< 2 to 5
    int nPoints = 0;                      ///< of those that fit no point of the lattice
    double dfByChance = 0;                ///< points that would be there all the same
    double dfShare = 0;                   ///< nPoints of all points, 0 to 1
    /// There also near the origin and at low indices of each axis, as reflections are. What an error of the
    /// geometry brings there is seen far out along the worst axis alone.
    bool bDemanded = false;
};

/// The cosets that hold far more points than chance would put there, the clearest first.
///
/// Chance is the greater of two: the points left over spread evenly, and the density around the coset, which
/// the smear of badly known geometry raises.
/// @param dfTolerance  of an index, at most that of the default
std::vector<Coset> findCosets(const LatticeBasis& basis, const LatticePoints& listPoint,
                              double dfTolerance = g_dfCosetTolerance);

/// The shortest basis of the lattice whose reciprocal lattice holds the coset, too: the direct cell grows by
/// the order of the coset.
LatticeBasis supercell(const LatticeBasis& basis, const Coset& coset);

struct LatticeWithCosets {
    LatticeBasis matBasis;             ///< shortest basis of the primitive lattice in the end
    QString strCentring;               ///< of the basis that was given: centringOf()
    std::vector<Absence> listAbsence;  ///< of the basis that was given
    std::vector<Coset> listTaken;      ///< each of the lattice as it was when the coset was taken
    std::vector<Coset> listNamed;      ///< of the lattice in the end: not demanded, but worth a word
};

/// Makes the lattice primitive where all its reflections keep a condition, and takes supercells for as long
/// as the points left over demand them. The basis is refined on the way.
LatticeWithCosets latticeAndCosets(const LatticeBasis& basis, const LatticePoints& listPoint,
                                   double dfTolerance = g_dfCosetTolerance);

/// "11 % of the peaks lie at (1/2, 1/2, 1/2)"
QString cosetText(const Coset& coset);

}  // namespace tessera
