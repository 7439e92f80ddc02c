// Standard errors of a cell in another setting.
#pragma once

#include "integration/scaling.h"
#include "lattice/conventionalcell.h"
#include "records/cellparameters.h"

namespace tessera {

/// Propagates the errors of the cell in force, taken as independent, to the setting of a symmetry. Angles
/// that the lattice system fixes have the error 0; edges that it makes equal have the error of their mean.
CellParameters errorsOfSetting(const ObservationSymmetry& symmetry, LatticeSystem system,
                               const CellParameters& cellInForce, const CellParameters& errors);

}  // namespace tessera
