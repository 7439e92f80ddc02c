// outputSmoothedImage: writes the smoothed image of a frame as an MRC file.
#pragma once

#include "frames/peakfilters.h"
#include "imaging/imgobj.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <QString>

namespace tessera {

/// Writes the smoothed frame of the peak search as an MRC file with one image.
///
/// The name is the absolute path of the folder of strFileName, "/N", its base name, ".mrc".
/// @return false, with a red line, when the image has no pixels or the file cannot be written
bool outputSmoothedImage(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                         CPeakFilters& filters, const QString& strFileName, CRunReport& report);

}  // namespace tessera
