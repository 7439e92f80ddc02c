// Symmetry proposal: which of the Bravais types that a cell fits its own errors allow.
#pragma once

#include "lattice/latticesymmetry.h"

namespace tessera {

/// How far the cell is from the type, %: the worse of the misfit of its edges and of the sine of that of its
/// angles.
double strainOf(const LatticeSymmetry& symmetry);

/// The highest symmetry that is in keeping with the lower ones.
///
/// Nobody tells the error of a cell whose geometry is not refined: an elliptic pattern alone moves edges by a
/// per cent and angles by a degree. The cell tells it itself, as angles that are right by a lower symmetry
/// miss it by so much. So the types are accepted from the bottom upwards: one is, if it is hardly further off
/// than the closest of the accepted ones that it holds.
/// @param listSymmetry  of latticeSymmetries() or bestOfEachType()
/// @return none of an empty list
std::optional<LatticeSymmetry> symmetryInKeeping(const std::vector<LatticeSymmetry>& listSymmetry);

}  // namespace tessera
