// exportBinnedFrames: writes resized copies of the frames.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

namespace tessera {

/// The file of the resized copy, in the folder of the frame: its name up to the first dot and "_s.mrc".
QString scaledFrameFile(const QString& strFrame);

/// Writes a resized copy of the first image of each frame as an MRC file, see scaledFrameFile(). The sides
/// are multiplied by `dfScale` and truncated to whole pixels. Existing files are replaced. For failures see
/// exportSeries(); a copy that would have no pixels or does not fit into memory counts as a file that
/// cannot be written.
/// @return Finished if each frame has its copy
RunOutcome exportBinnedFrames(const DataSet& dataSet, double dfScale, CRunReport& report);

}  // namespace tessera
