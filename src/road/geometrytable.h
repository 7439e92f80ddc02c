// The table of the refined geometry for the log.
#pragma once

#include "refinement/geometryrefinement.h"

#include <QStringList>

namespace tessera {

/// A line for each number: its value before and after, the standard error, and whether it was free or fixed;
/// then the cells with their standard errors. Lengths of the cell hold as far as the size of a pixel does,
/// which is said.
QStringList geometryTable(const GeometryRefinement& refinement);

}  // namespace tessera
