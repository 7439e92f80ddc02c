// BravaisType: crystal system and centring of a lattice whose metric is known exactly.
#pragma once

#include "simulate/matrix3.h"

#include <QString>

namespace tessera {

/// One of the fourteen.
struct BravaisType {
    QString strSystem;  ///< triclinic, monoclinic, orthorhombic, tetragonal, rhombohedral, hexagonal or cubic
    QString strCentring;  ///< P, C, I, F or R, in the setting of the International Tables

    /// Pearson's letters, such as mC; empty where system and centring are none of the fourteen. Settings that
    /// name the same type, as A, B and I beside C in the monoclinic system, or trigonal R, have the same
    /// letters. Source: de Wolff et al. (1985), Acta Cryst. A41, 278.
    QString symbol() const;
};

/// The type of a lattice by its own symmetry: all whole matrices that keep the metric of a reduced basis.
/// @param matPrimitive  a basis of the direct lattice in the rows, exact to better than 1e-6
BravaisType bravaisTypeOf(const Matrix3& matPrimitive);

/// The primitive reciprocal basis as rows of indices that a centring letter leaves (P, A, B, C, I, F, or R in
/// the obverse setting); the identity for another letter.
Matrix3 primitiveIndicesOf(const QString& strCentring);

}  // namespace tessera
