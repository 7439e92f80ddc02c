// Conventional setting: transforms a cell to the axes of a chosen Bravais type.
#pragma once

#include "crystal/celltransformation.h"
#include "geometry/matrix3.h"
#include "lattice/latticesymmetry.h"

namespace tessera {

/// a*, b*, c* of the conventional cell without its constraints. The points of reciprocal space do not move;
/// only their indices change.
/// @param basis  the one for which the symmetry was found
ReciprocalBasis inConventionalSetting(const ReciprocalBasis& basis, const LatticeSymmetry& symmetry);

/// The matrix by which transformUnitCell() and the page of the cell transform to the conventional setting.
/// In real space it is matTransform: its rows make the new a, b, c from the old ones and are whole numbers.
/// In reciprocal space its rows make the new a*, b*, c* from the old ones. That is the transposed inverse,
/// with halves and thirds where the cell is centred.
CMatrix3 transformationMatrix(const LatticeSymmetry& symmetry,
                              TransformationSpace space = TransformationSpace::Real);

}  // namespace tessera
