// Indexing: h, k, l of the merged reflections, spread outwards from the origin.
#pragma once

#include "app/dataset/dataset.h"
#include "app/records/runparameters.h"
#include "app/records/runreport.h"

#include <functional>

/// Gives each reflection its indices from indexed neighbours, or by plain division where there are none.
///
/// Sorts `listPeak` by dfDStar and writes dfH, dfK, dfL. A neighbour lies within `fRadius` (Å⁻¹) and counts
/// when it is indexed and the step from it is whole within `fThreshold`; its weight falls with the distance,
/// so that the error of the basis does not add up. Passes repeat until one indexes nothing new.
/// Does nothing without three basis vectors or with a basis that CBasisSolver rejects. Returns false when
/// the run was stopped; the list is then as it was.
bool indexReflections(QList<Peak3D>& listPeak, const QList<Vec3D>& listBasis, float fThreshold, float fRadius,
                      CRunReport& report);

/// How an indexing run ended.
enum class IndexingStatus { Finished, NoCell, NothingSelected, CoPlanarBasis, Stopped };

/// What an indexing run hands to the views and the peak table.
struct IndexingResult {
    IndexingStatus status = IndexingStatus::Stopped;
    QList<Peak3D> listIndexed;    ///< indexed, not on an edge, without duplicates, in order of groups
    QList<Peak3D> listRounded;    ///< with whole indices, duplicates included: input of cell refinement
    QList<Peak3D> listSelection;  ///< the whole selection by d*, with real indices
    QList<int> listDuplicatedID;  ///< nID for the point group "Duplicated"
    QList<int> listUnindexedID;   ///< nID for the point group "Unindexed"
    QList<int> listOnEdgeID;      ///< nID for "On edge": strongest on the first or last frame
};

/// Indexes the selected reflections with the cell in force.
///
/// `fnShow` is called once the reflections are sorted out and grouped, before files and statistics: views and
/// table take the result there, and the table the space group that the statistics leave on another one.
/// Replaces m_vecPeakIndexedOnFrame and m_vecReflectionFrame, writes the result files when the boxes ask for
/// them, and leaves m_listPeakMerged as it is. Every status but Finished leaves the data set unchanged.
IndexingResult runIndexing(DataSet& dataSet, const QList<Peak3D>& listSelection,
                           const IndexingParameters& parameters, CRunReport& report,
                           const std::function<void(const IndexingResult&)>& fnShow = {});
