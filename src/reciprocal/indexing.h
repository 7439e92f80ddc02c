// Indexing: the run that gives the merged reflections h, k, l and sorts out what has none.
#pragma once

#include "dataset/dataset.h"
#include "records/fileset.h"
#include "records/runoutcome.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <functional>

namespace tessera {

/// What an indexing run hands to the views and the peak table.
struct IndexingResult {
    RunOutcome outcome{RunEnd::Stopped, {}};  ///< Refused without a cell that is one, and without reflections
    QList<Peak3D> listIndexed;    ///< indexed, not on an edge, without duplicates, in order of groups
    QList<Peak3D> listRounded;    ///< with whole indices, duplicates included: input of cell refinement
    QList<Peak3D> listSelection;  ///< the whole selection by d*, with real indices
    QList<int> listDuplicatedID;  ///< nID for the point group "Duplicated"
    QList<int> listUnindexedID;   ///< nID for the point group "Unindexed"
    QList<int> listOnEdgeID;      ///< nID for "On edge": strongest on the first or last frame
};

/// Whether any reflection has indices that say something: not all of them 0 when rounded.
bool holdsIndexed(const QList<Peak3D>& listIndexed);

/// Indexes the selected reflections with the cell in force.
///
/// `fnShow` is called once the reflections are sorted out and grouped, before files and statistics: views and
/// table take the result there, and the table the space group that the statistics leave on another one.
/// Replaces m_vecPeakIndexedOnFrame, m_vecReflectionFrame, m_listReflectionIndexed and m_listCellIndexed,
/// writes the result files when the boxes ask for them (without any indexed peaks of the frames not their
/// list), and leaves m_listPeakMerged as it is. Every end but Finished leaves the data set unchanged. When
/// no reflection is indexed, former files that hold some are kept with "~" behind their names, or stay if
/// what is kept there holds more.
///
/// @param pFiles  may be null; else the result files become part of the set and wait for its commit(), and
///                what becomes of former ones is the caller's affair
IndexingResult runIndexing(DataSet& dataSet, const QList<Peak3D>& listSelection,
                           const IndexingParameters& parameters, CRunReport& report,
                           const std::function<void(const IndexingResult&)>& fnShow = {},
                           CFileSet* pFiles = nullptr);

}  // namespace tessera
