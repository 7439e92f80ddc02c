// Absences: conditions that all reflections of a lattice keep, so that its cell is longer than the true one.
#pragma once

#include "lattice/cosettable.h"

#include <QString>

#include <vector>

namespace tessera {

/// A condition that all reflections keep: the sum of the form times h, k, l is a multiple of the denominator.
/// The form over the denominator is a vector of the direct lattice that the basis left out.
struct Absence {
    IndexTriple anForm = {0, 0, 0};  ///< 0 to the denominator less one
    int nDenominator = 2;            ///< 2 or 3
    int nAgainst = 0;                ///< points on reflections that the condition forbids
    double dfByChance = 0;           ///< points that would be there all the same
    int nFitting = 0;                ///< points on reflections that it allows
};

/// The conditions that the points on the lattice keep, as far as chance lets see. Only general reflections
/// count, none of whose indices is 0, so that glide planes stay out, and a hundred of them are needed.
std::vector<Absence> findAbsences(const LatticeBasis& basis, const LatticePoints& listPoint,
                                  double dfTolerance = g_dfCosetTolerance);

/// The shortest basis of the lattice that the absence leaves: the direct cell shrinks by the denominator.
LatticeBasis subcell(const LatticeBasis& basis, const Absence& absence);

/// What the absences make of a cell: "A", "B", "C", "I", "F" or "R", "P" without any, and empty where an axis
/// is a multiple of the true one, or the cell has no name.
QString centringOf(const std::vector<Absence>& listAbsence);

}  // namespace tessera
