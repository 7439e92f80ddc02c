// Lattice symmetry: the Bravais types that a measured cell fits, with their conventional cells.
#pragma once

#include "lattice/conventionalcell.h"

#include <QString>

#include <optional>
#include <vector>

namespace tessera {

/// The deviations from a symmetry up to which it is listed.
struct SymmetryLimits {
    double dfObliquity = 3;  ///< of each twofold axis, °
    double dfLengths = 3;    ///< of the edges of the conventional cell, %
    double dfAngles = 3;     ///< of its angles, °
};

/// Standard deviations of a measured cell, one for all edges and one for all angles.
struct CellUncertainty {
    double dfLengths = 0;  ///< of an edge, %
    double dfAngles = 0;   ///< of an angle, °
};

/// A Bravais type that a lattice fits. The cells and bases are conventional ones, see conventionalCell().
struct LatticeSymmetry {
    LatticeSystem system = LatticeSystem::Triclinic;  ///< of the lattice
    char chCentring = 'P';                            ///< P, C, I, F or R; R in hexagonal axes, obverse
    int nRotations = 1;                               ///< number of rotations: 1, 2, 4, 6, 8, 12 or 24
    Eigen::Matrix3i matTransform;    ///< rows: the new axes in coordinates along the old a, b, c
    LatticeBasis basisMeasured;      ///< matTransform * (old basis), right-handed
    LatticeBasis basisConstrained;   ///< of the constrained cell, rotated to be as close as possible to the
                                     ///< measured one
    CellParameters cellMeasured;     ///< of basisMeasured
    CellParameters cellConstrained;  ///< of the metric averaged over the symmetry
    double dfMisfitLengths = 0;      ///< of the worst edge, measured against constrained, %
    double dfMisfitAngles = 0;       ///< of the worst angle, °
    double dfObliquity = 0;          ///< of the worst twofold axis, °
};

/// Finds all Bravais types within the limits, and for each of them all ways in which its axes can be in the
/// lattice. Higher symmetry, by the number of rotations, comes first, and smaller misfit where the symmetry
/// is equal. The triclinic cell, which is Niggli's and always fits, comes last.
///
/// @param basis  rows a, b, c in Å of a primitive cell of either handedness
/// @return empty where the basis spans no cell, see niggliBasis()
/// Source: the twofold axes by Le Page (1982), J. Appl. Cryst. 15, 255–259; their groups by Zwart,
/// Grosse-Kunstleve & Adams (2006), CCP4 Newsletter 44.
std::vector<LatticeSymmetry> latticeSymmetries(const LatticeBasis& basis, const SymmetryLimits& limits = {});

/// The best fit of each Bravais type, in the order of the list.
std::vector<LatticeSymmetry> bestOfEachType(const std::vector<LatticeSymmetry>& listSymmetry);

/// The highest symmetry that is compatible with the uncertainty of the cell: the first one of the list
/// whose misfits are at most three standard deviations. It is only a proposal, as a metric can have more
/// symmetry than the crystal.
/// @return nothing for an empty list
std::optional<LatticeSymmetry> proposedSymmetry(const std::vector<LatticeSymmetry>& listSymmetry,
                                                const CellUncertainty& uncertainty);

/// "triclinic" to "cubic".
QString nameOf(LatticeSystem system);

/// Pearson's symbol: aP, mP, mC, oP, oC, oI, oF, tP, tI, hR, hP, cP, cI or cF. There is one for each of the
/// 14 types, so a monoclinic lattice with the centring I is mC, too.
QString bravaisSymbol(const LatticeSymmetry& symmetry);

}  // namespace tessera
