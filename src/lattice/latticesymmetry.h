// Lattice symmetry: the Bravais types that a measured cell fits, with their conventional cells.
#pragma once

#include "lattice/conventionalcell.h"

#include <QString>

#include <optional>
#include <vector>

namespace tessera {

/// How far a cell may be from a symmetry to be listed with it.
struct SymmetryLimits {
    double dfObliquity = 3;  ///< °, of each twofold axis
    double dfLengths = 3;    ///< %, of the edges of the conventional cell
    double dfAngles = 3;     ///< °, of its angles
};

/// Standard deviations of a measured cell.
struct CellErrors {
    double dfLengths = 0;  ///< % of an edge
    double dfAngles = 0;   ///< ° of an angle
};

/// A Bravais type that a lattice fits. Cells and bases are conventional ones: see conventionalCell().
struct LatticeSymmetry {
    LatticeSystem system = LatticeSystem::Triclinic;
    char chCentring = 'P';           ///< P, C, I, F or R; R in hexagonal axes, obverse
    int nRotations = 1;              ///< 1, 2, 4, 6, 8, 12 or 24
    Eigen::Matrix3i matTransform;    ///< a row for each new axis: its coordinates along the old a, b, c
    LatticeBasis basisMeasured;      ///< matTransform * (old basis), right-handed
    LatticeBasis basisConstrained;   ///< that of the constrained cell, turned to lie as close as it can
    CellParameters cellMeasured;     ///< as it comes out of the old basis
    CellParameters cellConstrained;  ///< of the metric averaged over the symmetry
    double dfMisfitLengths = 0;      ///< %, of the worst edge: measured against constrained
    double dfMisfitAngles = 0;       ///< °, of the worst angle
    double dfObliquity = 0;          ///< °, of the worst twofold axis
};

/// All Bravais types within the limits, for each the several ways in which its axes can lie in the lattice.
/// The higher symmetry comes first (by its rotations), and of equal ones the smaller misfit; the triclinic
/// cell, which is Niggli's and always fits, comes last.
///
/// @param basis  rows a, b, c in Å, of a primitive cell of either hand
/// @return empty where the basis spans no cell (see niggliBasis())
/// Source: the twofold axes by Le Page (1982), J. Appl. Cryst. 15, 255–259; their groups by Zwart,
/// Grosse-Kunstleve & Adams (2006), CCP4 Newsletter 44.
std::vector<LatticeSymmetry> latticeSymmetries(const LatticeBasis& basis, const SymmetryLimits& limits = {});

/// The best fit of each Bravais type, in the order of the list.
std::vector<LatticeSymmetry> bestOfEachType(const std::vector<LatticeSymmetry>& listSymmetry);

/// The highest symmetry that errors of the cell explain: the first of the list with misfits of no more than
/// three standard deviations. A proposal alone: a metric can be more symmetric than the crystal.
/// @return none of an empty list
std::optional<LatticeSymmetry> proposedSymmetry(const std::vector<LatticeSymmetry>& listSymmetry,
                                                const CellErrors& errors);

/// "triclinic" to "cubic".
QString nameOf(LatticeSystem system);

/// Pearson's symbol: aP, mP, mC, oP, oC, oI, oF, tP, tI, hR, hP, cP, cI, cF. One for each of the 14 types: a
/// monoclinic lattice with the centring I is mC too.
QString bravaisSymbol(const LatticeSymmetry& symmetry);

}  // namespace tessera
