// Job trees: the trees of a merging of many crystals as drawings.
#pragma once

#include "crystals/crystalsjob.h"
#include "crystals/treeplot.h"

namespace tessera {

/// The tree of the lattices, with the groups in their colours.
TreePlot latticeTree(const CrystalsJobResult& result, const CellTolerance& tolerance);

/// The tree of a group's crystals by the correlations of their intensities; those that were left out struck
/// through.
TreePlot correlationTree(const CrystalsJobResult& result, const CompoundGroup& compound);

/// What each crystal is called: its name, with as many of its folders before it as tell it from the others.
QStringList labelsOf(const std::vector<Crystal>& listCrystal);

}  // namespace tessera
