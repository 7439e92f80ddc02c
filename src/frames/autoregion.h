// findBeamRegion: the reference region of the shift evaluation where the user has not chosen one.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QRect>

#include <optional>

namespace tessera {

/// Finds the direct beam of a series and a square region around it. Frames of another size than the first
/// one are left out.
///
/// @param nJobs  frames that are read side by side; the result does not depend on it
/// @return the region in raw frame pixels, wholly inside the frame. Its side is 256, more where the beam
///         wanders far over the series, and less in small frames. Nothing, with a red line, when no frame
///         can be read, all are blank or the frames are too small; nothing, without a line, when the report
///         asked to stop
std::optional<QRect> findBeamRegion(const DataSet& dataSet, CRunReport& report, int nJobs = 1);

}  // namespace tessera
