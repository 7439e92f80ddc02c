// seriesGeometry: gathers the input of the prediction from a data set and its refined geometry.
#pragma once

#include "dataset/dataset.h"
#include "integration/seriesgeometry.h"
#include "records/runparameters.h"
#include "refinement/geometryrefinement.h"

#include <optional>

namespace tessera {

/// Tilts include their share of the relaxation; the direct beam of each frame is that of shifts and centre.
/// Cell and distortions are those of the refined model if there is one, else the cell in force and the
/// geometry of the mapping. The size of the frames is that of the first frame that can be read.
/// @param refined  may be null
/// @return none if there is no cell, no frame, or a frame without tilt or shift
std::optional<SeriesGeometry> seriesGeometry(const DataSet& dataSet, const MappingParameters& mapping,
                                             const GeometryRefinement* refined);

}  // namespace tessera
