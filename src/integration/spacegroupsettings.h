// Space group settings: the space groups that are compatible with a Laue class in its setting.
#pragma once

#include <gemmi/symmetry.hpp>

#include <vector>

namespace tessera {

/// All settings in gemmi's table that have the centring of the Laue class and whose rotations, together with
/// the inversion, are those of the Laue class. This includes permuted axes of orthorhombic groups and cell
/// choices of monoclinic ones. Of two origin choices only the second is listed, which has an inversion centre
/// at the origin.
std::vector<const gemmi::SpaceGroup*> spaceGroupSettings(const gemmi::GroupOps& laue);

}  // namespace tessera
