// Conventional setting: the basis of a chosen Bravais type, and the transformation matrix that leads to it.
#pragma once

#include "crystal/celltransformation.h"
#include "geometry/matrix3.h"
#include "lattice/latticesymmetry.h"

namespace tessera {

/// a*, b*, c* of the conventional cell as measured: points keep their places and get indices of that cell.
/// @param basis  the one that the symmetry was found for
ReciprocalBasis inConventionalSetting(const ReciprocalBasis& basis, const LatticeSymmetry& symmetry);

/// The matrix that transformUnitCell() and the page of the cell need to come to the conventional setting. In
/// real space it is matTransform: the rows make the new a, b, c from the old ones, all whole numbers. In
/// reciprocal space its rows make the new a*, b*, c* from the old ones: the inverse of that, transposed, with
/// halves and thirds where the cell is centred.
CMatrix3 transformationMatrix(const LatticeSymmetry& symmetry,
                              TransformationSpace space = TransformationSpace::Real);

}  // namespace tessera
