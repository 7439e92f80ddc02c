// Stretching test: distances and azimuths of indexed peaks of a known square net, as a table.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

namespace tessera {

/// Writes a row per peak, then the cell in force as it lies in the plane, to the log and to the text file
/// "NAME_pos.txt" beside the project. A peak with h = k = 0 shows 0 for its distance by order.
/// @return false, with a red line, if the file could not be written
bool testStreching(const QList<Peak3D>& listPeakIndexed, const DataSet& dataSet, CRunReport& report);

}  // namespace tessera
