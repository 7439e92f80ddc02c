// Conventional cells: the standard axes of a lattice, from its rotations.
#pragma once

#include "lattice/rotationgroups.h"

#include <optional>

namespace tessera {

/// The seven lattice systems.
enum class LatticeSystem { Triclinic, Monoclinic, Orthorhombic, Tetragonal, Rhombohedral, Hexagonal, Cubic };

/// A conventional cell. Each row is a lattice vector in coordinates along the vectors of another basis.
struct ConventionalCell {
    LatticeSystem system = LatticeSystem::Triclinic;
    char chCentring = 'P';  ///< P, C, I, F or R
    /// The determinant is 1 for P, 2 for C and I, 3 for R, and 4 for F.
    Eigen::Matrix3i matRows = Eigen::Matrix3i::Identity();
};

/// The standard cell of a group of rotations, right-handed:
/// - triclinic: the basis as given, which should be Niggli's;
/// - monoclinic: b is the twofold axis, β ≥ 90°; a ≤ c for P and I. A centred lattice is C, or I if that
///   has β closer to 90°;
/// - orthorhombic: a ≤ b ≤ c; for C, the centred face is ab, and a ≤ b;
/// - tetragonal: P or I, c is the fourfold axis;
/// - rhombohedral: R in hexagonal axes, obverse: (2/3 1/3 1/3) is a lattice vector;
/// - hexagonal: P, c is the sixfold axis, γ = 120°;
/// - cubic: P, I or F.
///
/// @param metric  scalar products of the basis, with the symmetry of the group
/// @return nothing where the group is that of no lattice: 32 without the centring of a rhombohedral lattice
std::optional<ConventionalCell> conventionalCell(const RotationGroup& group, const Eigen::Matrix3d& metric);

}  // namespace tessera
