// Space group settings: the space groups that a Laue class in its setting leaves open.
#pragma once

#include <gemmi/symmetry.hpp>

#include <vector>

namespace tessera {

/// All settings of gemmi's table whose rotations, with the inversion added, are those of the Laue class, and
/// whose centring is its own: permutations of orthorhombic axes and cell choices of monoclinic ones included.
/// Of two choices of origin the second is there, which has the inversion at the origin.
std::vector<const gemmi::SpaceGroup*> spaceGroupSettings(const gemmi::GroupOps& laue);

}  // namespace tessera
