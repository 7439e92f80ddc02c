// suggestCellRange: the range of edges for the cell search that follows from the distances of the spots.
#pragma once

#include "dataset/dataset.h"
#include "frames/suggestpeaksearch.h"

namespace tessera {

/// The range of automaticCellRange() for the boxes of the page, whole Å upwards for the longest edge.
/// @return none where there are too few distances to tell
Suggestion suggestCellRange(const DataSet& dataSet);

}  // namespace tessera
