// Cell hunting: the reciprocal basis from the difference vectors of the merged reflections.
#pragma once

#include "app/dataset/dataset.h"
#include "app/records/runparameters.h"
#include "app/records/runreport.h"
#include "crystal/cellmessage.h"

/// Collects the merged reflections that a point group of the merged view stands for.
///
/// @param listPeakMerged  the reflections to choose from
/// @param listViewPoint   the points of the merged view: reflections and the peaks of streaks
/// @param listGroupIndex  the group's indices into listViewPoint; invalid ones are passed over
/// @param listPeak        takes the reflections whose nID a point of the group has, in merged order
/// A negative nID gives a red line. Returns false, with listPeak untouched, when the view holds no points.
bool selectReflectionsForProcessing(const QList<Peak3D>& listPeakMerged, const QList<Peak3D>& listViewPoint,
                                    const QList<int>& listGroupIndex, QList<Peak3D>& listPeak,
                                    CRunReport& report);

/// The commit of a found basis: m_listCell takes m_listCellFound when that holds three vectors.
void updateUnitCell(DataSet& dataSet);

/// The commit of a transformed basis: m_listCellFound takes m_listCell, the project's unit-cell file takes
/// the basis (a red line if it can't be written; the commit stands; without a project there is no file), and
/// the indexed peaks and the reflections' frames are emptied, since they belong to the former cell.
/// @return false, with nothing changed, when m_listCell does not hold three vectors
bool commitTransformedCell(DataSet& dataSet, CRunReport& report);

/// Searches the unit cell of the selected reflections and commits it.
///
/// On success m_listCellFound and m_listCell hold a*, b*, c* (Å⁻¹, laboratory frame), the log the direct
/// cell, and with `bSave` the project's unit-cell file the basis. Without a result, or when the run was
/// stopped, the former cell stays and the result is false.
bool runUnitCellHunting(DataSet& dataSet, const QList<Peak3D>& listSelection,
                        const CellHuntingParameters& parameters, CRunReport& report, bool bSave,
                        const QString& strLatticeHost = latticeServiceHost());
