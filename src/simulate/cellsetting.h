// Cell setting: the true edges and angles in the setting of a found cell.
#pragma once

#include "simulate/matrix3.h"

#include <vector>

namespace tessera {

/// The true lattice described as a found cell describes it.
struct CellSetting {
    bool bFound = false;
    std::array<double, 6> adfTrue{};  ///< Å, degrees, of the three true lattice vectors that fit best
    int nVolumeRatio = 0;             ///< of the cell of these vectors to the primitive one
};

/// Of all triples of true lattice vectors the one nearest to a cell of six numbers, by the sum of squares of
/// relative deviations of the edges and deviations of the angles in radians. Six numbers tell no orientation,
/// so that a cell held to its symmetry, or one on other axes than the indexed ones, is judged as well.
/// @param adfCell  Å, degrees
/// @param matTrue, matPrimitive  the reciprocal basis and the primitive one on it, as of matchLattice()
/// @return not found where an edge deviates by 6 % or an angle by 5°
CellSetting trueCellInSettingOf(const std::array<double, 6>& adfCell, const Matrix3& matTrue,
                                const Matrix3& matPrimitive);

/// All ways in which a cell of six numbers can lie on the true lattice, of either hand: those triples of true
/// lattice vectors that are as near as the nearest one within 0.3 % or 0.2°. They are equivalent by the
/// symmetry of the metric, which may be higher than that of the crystal.
/// @return for each, the matrix that a row of indices on the cell is multiplied by to give those on the true
/// cell;
///         not whole where the cell is larger than the true one
std::vector<Matrix3> settingsNear(const std::array<double, 6>& adfCell, const Matrix3& matTrue,
                                  const Matrix3& matPrimitive);

}  // namespace tessera
