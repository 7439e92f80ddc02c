// Possible reflections: the unique ones that there are within a resolution.
#pragma once

#include "integration/scaling.h"
#include "records/cellparameters.h"

#include <array>
#include <functional>

namespace tessera {

/// Calls for each unique reflection up to the resolution, (0, 0, 0) and the absences of the centring left
/// out, with its d* in Å⁻¹.
/// @return false, without a call, where the cell is none or holds more than five million points of the
/// lattice
bool forEachPossibleReflection(const ObservationSymmetry& symmetry, const CellParameters& cell, double dfDMin,
                               const std::function<void(const std::array<int, 3>&, double)>& fnReflection);

}  // namespace tessera
