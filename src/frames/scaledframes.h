// exportBinnedFrames: resized copies of the frames.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

namespace tessera {

/// The resized copy's file, beside the frame: its name up to the first dot and "_s.mrc".
QString scaledFrameFile(const QString& strFrame);

/// Writes a copy of the first image of each frame, with its sides times `dfScale` truncated to whole pixels,
/// as an MRC file beside the frame: its name up to the first dot and "_s.mrc". Existing files are replaced.
/// See exportSeries() for what goes wrong; a frame that would have no pixels left, or more than memory holds,
/// is a file that can't be written.
/// @return Finished if each frame has its copy
RunOutcome exportBinnedFrames(const DataSet& dataSet, double dfScale, CRunReport& report);

}  // namespace tessera
