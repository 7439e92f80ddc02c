// Unit cell: cell parameters as gemmi has them.
#pragma once

#include "records/cellparameters.h"

#include <gemmi/unitcell.hpp>

#include <optional>

namespace tessera {

/// @return none where the six numbers span no cell, of which gemmi would throw
std::optional<gemmi::UnitCell> unitCellOf(const CellParameters& cell);

}  // namespace tessera
