// Conventional cells: the standard axes of a lattice, from its rotations.
#pragma once

#include "lattice/rotationgroups.h"

#include <optional>

namespace tessera {

enum class LatticeSystem { Triclinic, Monoclinic, Orthorhombic, Tetragonal, Rhombohedral, Hexagonal, Cubic };

/// A cell by its rows: each is a vector of the lattice, in coordinates along the vectors of another basis.
struct ConventionalCell {
    LatticeSystem system = LatticeSystem::Triclinic;
    char chCentring = 'P';  ///< P, C, I, F or R
    /// Determinant 1 of P, 2 of C and I, 3 of R, 4 of F.
    Eigen::Matrix3i matRows = Eigen::Matrix3i::Identity();
};

/// The standard cell of a group of rotations, right-handed:
/// - triclinic: the basis as it is, which should be Niggli's;
/// - monoclinic: b the twofold axis, β ≥ 90°; P and I with a ≤ c. A centred lattice is C, or I where that has
///   the β nearer to 90°;
/// - orthorhombic: a ≤ b ≤ c; of C the centred face is ab, and a ≤ b;
/// - tetragonal: P or I, c the fourfold axis;
/// - rhombohedral: R in hexagonal axes, obverse: the lattice has (2/3 1/3 1/3);
/// - hexagonal: P, c the sixfold axis, γ = 120°;
/// - cubic: P, I or F.
///
/// @param metric  scalar products of the basis, with the symmetry of the group
/// @return none where the group is not that of a lattice: 32 without the centring of a rhombohedral one
std::optional<ConventionalCell> conventionalCell(const RotationGroup& group, const Eigen::Matrix3d& metric);

}  // namespace tessera
