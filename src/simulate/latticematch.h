// LatticeMatch: how a found lattice stands to the true one.
#pragma once

#include "simulate/matrix3.h"

namespace tessera {

/// Deviations of a cell from the true one, both in the true setting.
struct CellErrors {
    std::array<double, 3> adfLength{};  ///< per cent
    std::array<double, 3> adfAngle{};   ///< degrees
};

/// How the lattice that a reciprocal basis spans stands to the true one.
struct LatticeMatch {
    enum Relation {
        None,       ///< no cell, or one without a simple relation to the true one
        Same,       ///< another basis of the same lattice
        Centred,    ///< a centred cell: the true lattice, on axes that are true lattice vectors
        Supercell,  ///< a direct axis is a multiple of a true one: all reflections index, but too many
                    ///< indices
        Subcell     ///< the direct cell is too small: only some reflections index
    };
    Relation relation = None;
    int nIndex = 0;       ///< ratio of the volumes
    Matrix3 matToTrue{};  ///< row of found indices times this = indices on the true conventional cell
    std::array<double, 6> adfCell{};      ///< the found cell brought to the true setting
    std::array<double, 6> adfTrueCell{};  ///< Å, degrees
    CellErrors errors;
    double dfMisfit = 0;  ///< largest distance of a matrix element from a whole number
    bool isRight() const { return relation == Same || relation == Centred; }
};

/// The deviations of a cell (Å, degrees) that stands in the setting of the found basis.
CellErrors errorsOfCell(const std::array<double, 6>& adfCell, const LatticeMatch& match,
                        const Matrix3& matTrue);

/// Finds the integer matrix between the found and the true lattice. Both bases stand in the same
/// laboratory frame, so elements are rounded where they lie; a misfit of 0.2 or more is no match.
/// @param matFound      a*, b*, c* in the rows, Å⁻¹
/// @param matTrue       the true conventional basis
/// @param matPrimitive  rows of indices of the true primitive reciprocal basis
LatticeMatch matchLattice(const Matrix3& matFound, const Matrix3& matTrue, const Matrix3& matPrimitive);

}  // namespace tessera
