// Cell commit: what becomes of the data set when a found or a transformed cell is taken over.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

namespace tessera {

/// The commit of a found basis: m_listCell takes m_listCellFound when that holds three vectors.
void updateUnitCell(DataSet& dataSet);

/// The commit of a transformed basis: m_listCellFound takes m_listCell, and the indexed peaks and the
/// reflections' frames are emptied, since they belong to the former cell. saveProjectCell() belongs after it.
/// @return false, with nothing changed, without a cell in force
bool commitTransformedCell(DataSet& dataSet);

/// Writes the cell in force to the project's unit-cell file; one that can't be written is a red line with its
/// reason. Without a project there is no file.
/// @return whether it was written
bool saveProjectCell(const DataSet& dataSet, CRunReport& report);

}  // namespace tessera
