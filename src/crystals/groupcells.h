// Group cells: the mean cell of the crystals of a group, and its spread.
#pragma once

#include "crystals/crystalsjob.h"

namespace tessera {

/// Fills cellMean and cellSpread: of the reduced cells of all members, each in its setting next to the
/// reference.
void takeMeanOfMembers(const CrystalsJobResult& result, const CellTolerance& tolerance,
                       CompoundGroup& compound);

/// Fills cell and cellDeviation of a merged group: of the conventional cells of the crystals that were used.
void takeConventionalCell(const CrystalsJobResult& result, CompoundGroup& compound);

}  // namespace tessera
