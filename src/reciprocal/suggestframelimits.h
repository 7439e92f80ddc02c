// suggestFrameLimits: limits of what is shown and merged that leave no peak of the frames out.
#pragma once

#include "dataset/dataset.h"
#include "frames/suggestpeaksearch.h"
#include "records/runparameters.h"

#include <QSize>

namespace tessera {

/// The d* of the corner of a frame that lies farthest from its direct beam, Å⁻¹, on the Ewald sphere.
/// @param size     of the frames, pixels
/// @param mapping  whether the stretching counts, which may move the corner out
/// @return 0 without a size, shifts or geometry
double dStarOfFarthestCorner(const DataSet& dataSet, const MappingParameters& mapping, const QSize& size);

/// The greatest d* up to the farthest corner, and the range of the point intensities, rounded outwards as
/// their boxes can hold them. The least intensity is 0, as on the page, unless a peak is weaker.
/// @param size  of the frames, pixels; without one no limit of d*
Suggestion suggestFrameLimits(const DataSet& dataSet, const MappingParameters& mapping, const QSize& size);

}  // namespace tessera
