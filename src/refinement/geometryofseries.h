// Input of the geometry refinement: the indexed peaks and the geometry of a data set.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"
#include "refinement/geometryrefinement.h"

#include <optional>
#include <vector>

namespace tessera {

/// The indexed peaks of the frames (m_vecPeakIndexedOnFrame), relative to the direct beam of their frame,
/// with the tilt that the mapping uses for the frame. Peaks of frames without a shift or a tilt are left out.
std::vector<GeometrySpot> geometrySpots(const DataSet& dataSet);

/// The geometry with which the peaks are mapped, distortions included, together with the cell in force.
/// @return none if the data set has no cell
std::optional<DiffractionGeometry> geometryOfSeries(const DataSet& dataSet, const MappingParameters& mapping);

}  // namespace tessera
