// estimatePeakThreshold: a threshold for peak hunting from the noise of the band-passed frames.
#pragma once

#include "app/dataset/dataset.h"
#include "app/records/runparameters.h"
#include "app/records/runreport.h"
#include "frames/peakfilters.h"

/// Eight robust standard deviations of the band-passed image, median over frames of the series.
///
/// @param parameters   the radii count, the threshold does not
/// @param dfThreshold  in units of the band-passed image
/// @param nJobs        frames looked at side by side; the threshold is the same for each
/// @return false, with a red line and dfThreshold untouched, when no frame can be read or all are blank;
///         false, without a line, when the report asked to stop
bool estimatePeakThreshold(const DataSet& dataSet, const PeakHuntingParameters& parameters,
                           CPeakFilters& filters, CRunReport& report, double& dfThreshold, int nJobs = 1);
