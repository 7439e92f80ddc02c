// cellResultOf: the result record for the cell of a data set.
#pragma once

#include "dataset/dataset.h"
#include "road/roadresults.h"

namespace tessera {

/// Parameters and volume of the cell in force, and the fraction of the mapped peaks that fit it.
CellResult cellResultOf(const DataSet& dataSet);

}  // namespace tessera
