// estimatePeakThreshold: a threshold for peak hunting from the noise of the band-passed frames.
#pragma once

#include "dataset/dataset.h"
#include "frames/peakfilters.h"
#include "records/runparameters.h"
#include "records/runreport.h"

namespace tessera {

/// Eight robust standard deviations of the band-passed image, median over frames of the series.
///
/// @param parameters   the radii count, the threshold does not
/// @param dfThreshold  in units of the band-passed image, as the log tells it: from 1 on with 2
///                     decimals, below with 4 digits
/// @param nJobs        frames looked at side by side; the threshold is the same for each
/// @param pdfScale     may be null; else takes what the frames are to be multiplied by, and dfThreshold
///                     is for frames so scaled: 1, or a power of ten for values such as 0 to 1, which the
///                     decimals of a peak list would not hold
/// @return false, with a red line and dfThreshold untouched, when no frame can be read or all are blank;
///         false, without a line, when the report asked to stop
bool estimatePeakThreshold(const DataSet& dataSet, const PeakHuntingParameters& parameters,
                           CPeakFilters& filters, CRunReport& report, double& dfThreshold, int nJobs = 1,
                           double* pdfScale = nullptr);

}  // namespace tessera
