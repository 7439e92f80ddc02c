// findBeamRegion: a reference region for shift evaluation where no user places one.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QRect>

namespace tessera {

/// Finds the direct beam of a series and a square region around it.
///
/// @param rcRegion  raw frame pixels, wholly inside the frames as large as the first; the side is 256, more
///                  where the beam wanders far over the series, less in small frames
/// @param nJobs     frames looked at side by side; the region is the same for each
/// @return false, with a red line and rcRegion untouched, when no frame can be read, all are blank or
///         no region fits;
///         false, without a line, when the report asked to stop
bool findBeamRegion(const DataSet& dataSet, CRunReport& report, QRect& rcRegion, int nJobs = 1);

}  // namespace tessera
