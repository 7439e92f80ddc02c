// Setting cell: standard errors of a cell in another setting.
#pragma once

#include "integration/scaling.h"
#include "lattice/conventionalcell.h"
#include "records/cellparameters.h"

namespace tessera {

/// Errors of the cell in the setting of a symmetry, those of the cell in force taken as independent of one
/// another. Angles that the system fixes have 0; edges that it makes equal share the error of their mean.
CellParameters errorsOfSetting(const ObservationSymmetry& symmetry, LatticeSystem system,
                               const CellParameters& cellInForce, const CellParameters& errors);

}  // namespace tessera
