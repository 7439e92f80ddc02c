// Checked cell hunting: a cell search that looks whether its cell indexes the reflections.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runparameters.h"
#include "records/runreport.h"

namespace tessera {

/// The part, 0 to 1, of the reflections that get indices of their own on a basis.
/// @param fThreshold  how far an index may lie from a whole number
double indexedShare(const ReciprocalBasis& basis, const QList<Peak3D>& listSelection, float fThreshold,
                    CRunReport& report);

/// Says so in the log where less than half of the reflections fit the cell in force, and with which longest
/// edge below that of `parameters`, if any, to search again.
void adviseOnCell(const DataSet& dataSet, const QList<Peak3D>& listSelection,
                  const CellHuntingParameters& parameters, double dfIndexThreshold, CRunReport& report);

/// Searches as runUnitCellHunting() does. Where less than half of the reflections fit the cell, it searches
/// again with a longest edge that leaves out the shortest vector of the last basis: one wrong vector, such as
/// spots that were hunted twice make, is shorter than all of the lattice and spoils the whole basis. The best
/// of a few cells is kept and committed; saveProjectCell() belongs after it.
///
/// @param dfIndexThreshold  as in the indexing
/// @param nJobs             threads; the cell is the same for every number
/// @return Finished with a cell; else how the first search ended, with the former cell in force
RunOutcome runCheckedCellHunting(DataSet& dataSet, const QList<Peak3D>& listSelection,
                                 const CellHuntingParameters& parameters, double dfIndexThreshold,
                                 CRunReport& report, int nJobs = 1);

}  // namespace tessera
