// outputSmoothedImage: a frame's smoothed image as an MRC file.
#pragma once

#include "frames/peakfilters.h"
#include "imaging/imgobj.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <QString>

namespace tessera {

/// Writes the smoothed frame, as peak hunting sees it, as a one-image MRC file.
///
/// The name is the absolute path of the folder of strFileName, "/N", its base name, ".mrc".
/// @return false, with a red line, when the image has no pixels or the file cannot be written
bool outputSmoothedImage(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                         CPeakFilters& filters, const QString& strFileName, CRunReport& report);

}  // namespace tessera
