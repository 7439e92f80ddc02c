// cellResultOf: the cell of a data set as a result.
#pragma once

#include "dataset/dataset.h"
#include "road/roadresults.h"

namespace tessera {

/// Parameters and volume of the cell in force, and how many of the mapped peaks fit it.
CellResult cellResultOf(const DataSet& dataSet);

}  // namespace tessera
