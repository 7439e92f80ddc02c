// BravaisType: crystal system and centring of a lattice whose basis is known exactly, as that of a simulated
// crystal is.
#pragma once

#include "simulate/matrix3.h"

#include <QString>

namespace tessera {

/// One of the fourteen Bravais types.
struct BravaisType {
    QString strSystem;  ///< triclinic, monoclinic, orthorhombic, tetragonal, rhombohedral, hexagonal or cubic
    QString strCentring;  ///< P, C, I, F or R, in the setting of the International Tables

    /// The letters of the Pearson symbol, such as mC; empty where system and centring are none of the
    /// fourteen. Names of the same type in other settings, such as monoclinic A, B and I beside C, or
    /// trigonal R beside rhombohedral R, have the same letters. Source: de Wolff et al. (1985), Acta Cryst.
    /// A41, 278.
    QString symbol() const;
};

/// The type of a lattice by its own symmetry, which is the group of integer matrices that leave the metric of
/// a reduced basis unchanged.
/// @param matPrimitive  a primitive basis of the direct lattice in the rows, in any unit and orientation; its
///                      metric must be exact to better than 1e-6, relatively
BravaisType bravaisTypeOf(const Matrix3& matPrimitive);

/// A primitive basis of the reciprocal lattice of a centred cell: indices hkl on the conventional cell, one
/// vector per row, which meet the reflection condition of the centring.
/// @param strCentring  A, B, C, I, F, or R for the obverse setting on hexagonal axes; for P and for anything
///                     else the result is the identity
Matrix3 primitiveIndicesOf(const QString& strCentring);

}  // namespace tessera
