// Conversion of cell parameters to gemmi's unit cell.
#pragma once

#include "records/cellparameters.h"

#include <gemmi/unitcell.hpp>

#include <optional>

namespace tessera {

/// The cell as gemmi's type.
/// @return none if the parameters do not span a cell, for which gemmi would throw
std::optional<gemmi::UnitCell> unitCellOf(const CellParameters& cell);

}  // namespace tessera
