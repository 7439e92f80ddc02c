// Symmetry proposal: chooses one of the Bravais types that a cell fits.
#pragma once

#include "lattice/latticesymmetry.h"

namespace tessera {

/// The misfit of a cell to a type, %: the worse of the misfit of its edges and of the sine of the misfit of
/// its angles.
double strainOf(const LatticeSymmetry& symmetry);

/// The highest symmetry whose misfit is consistent with the lower symmetries.
///
/// The error of a cell is unknown as long as the geometry is not refined; an elliptic distortion alone
/// changes edges by a per cent and angles by a degree. But the cell itself shows its error: angles that a
/// lower symmetry fixes deviate from it by so much. So the types are accepted from the lowest upwards, each
/// if its misfit is hardly greater than the smallest misfit of the accepted types that it contains.
/// @param listSymmetry  from latticeSymmetries() or bestOfEachType()
/// @return nothing for an empty list
std::optional<LatticeSymmetry> symmetryInKeeping(const std::vector<LatticeSymmetry>& listSymmetry);

}  // namespace tessera
