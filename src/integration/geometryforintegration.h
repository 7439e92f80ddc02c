// seriesGeometry: what the prediction needs, out of a data set and its refined geometry.
#pragma once

#include "dataset/dataset.h"
#include "integration/seriesgeometry.h"
#include "records/runparameters.h"
#include "refinement/geometryrefinement.h"

#include <optional>

namespace tessera {

/// Tilts with their share of the relaxation, and the direct beam of each frame from shifts and centre; basis,
/// plane and turn from the refined model where there is one, else the cell in force and what the mapping
/// works with. The size of the frames is read from the first one that can be.
/// @param refined  may be null
/// @return none without a cell, frames, or tilts and shifts for all of them
std::optional<SeriesGeometry> seriesGeometry(const DataSet& dataSet, const MappingParameters& mapping,
                                             const GeometryRefinement* refined);

}  // namespace tessera
