// The geometry of a data set and its indexed peaks, as the refinement takes them.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"
#include "refinement/geometryrefinement.h"

#include <optional>
#include <vector>

namespace tessera {

/// The indexed peaks of the frames (m_vecPeakIndexedOnFrame), each relative to its frame's direct beam, with
/// the tilt that the mapping turns it by. Frames without shift or tilt are left out.
std::vector<GeometrySpot> geometrySpots(const DataSet& dataSet);

/// What the mapping works with, its distortions included, and the cell in force.
/// @return none without a cell
std::optional<DiffractionGeometry> geometryOfSeries(const DataSet& dataSet, const MappingParameters& mapping);

}  // namespace tessera
