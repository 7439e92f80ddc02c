// Lattice finding: analyses the lattice of the cell in force.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Determines symmetry and proposed Bravais type, supercells and further lattices, and puts them into the log
/// and the results. If the conventional setting was requested and a type is proposed, the cell is transformed
/// to it, and the analysis refers to the transformed cell.
void findLattice(RoadState& state);

}  // namespace tessera
