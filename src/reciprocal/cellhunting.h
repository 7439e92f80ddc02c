// Cell hunting: the reciprocal basis from the difference vectors of the merged reflections.
#pragma once

#include "crystal/cellmessage.h"
#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runparameters.h"
#include "records/runreport.h"

namespace tessera {

/// Searches the unit cell of the selected reflections and commits it.
///
/// On success m_listCellFound and m_listCell hold a*, b*, c* (Å⁻¹, laboratory frame) and the log the direct
/// cell; saveProjectCell() belongs after it. In every other case the former cell stays.
/// @param nJobs  threads; the cell is the same for every number
/// @return Finished with a cell, Refused without reflections, Stopped, or Failed where none was found
RunOutcome runUnitCellHunting(DataSet& dataSet, const QList<Peak3D>& listSelection,
                              const CellHuntingParameters& parameters, CRunReport& report, int nJobs = 1,
                              const QString& strLatticeHost = latticeServiceHost());

}  // namespace tessera
