// Absences: conditions that all reflections of a lattice obey, which shows that its cell is too large.
#pragma once

#include "lattice/cosettable.h"

#include <QString>

#include <vector>

namespace tessera {

/// A condition that all reflections obey: the sum of the form times h, k, l is a multiple of the
/// denominator. The form divided by the denominator is a vector of the true direct lattice that the basis
/// does not have.
struct Absence {
    IndexTriple anForm = {0, 0, 0};  ///< each from 0 to the denominator − 1
    int nDenominator = 2;            ///< 2 or 3
    int nAgainst = 0;                ///< points on general reflections that the condition forbids
    double dfByChance = 0;           ///< number of such points expected by chance
    int nFitting = 0;                ///< points on general reflections that it allows
};

/// Finds the conditions that the points on a lattice obey, as far as chance allows to tell. Only general
/// reflections, with no index 0, are counted, so that glide planes and screw axes do not appear. At least a
/// hundred of them are needed.
/// @param dfTolerance  of an index
std::vector<Absence> findAbsences(const LatticeBasis& basis, const LatticePoints& listPoint,
                                  double dfTolerance = g_dfCosetTolerance);

/// The shortest basis of the lattice that obeys the condition without absences: the volume of the direct
/// cell is divided by the denominator.
LatticeBasis subcell(const LatticeBasis& basis, const Absence& absence);

/// The centring that absences mean for a cell: "A", "B", "C", "I", "F" or "R", and "P" without absences.
/// Empty where they mean that an axis is a multiple of the true one, or a centring without a name.
QString centringOf(const std::vector<Absence>& listAbsence);

}  // namespace tessera
