// Lattice finding: the road's look at the lattice of its cell.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Looks at the cell in force, says what it found and keeps it in the results: symmetry with the proposed
/// type, supercells, further lattices. Where the conventional setting was asked for and a type is proposed,
/// the cell becomes that; the analysis then tells of this one.
void findLattice(RoadState& state);

}  // namespace tessera
