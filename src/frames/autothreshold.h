// estimatePeakThreshold: the threshold of the peak search, from the noise of the band-passed frames.
#pragma once

#include "dataset/dataset.h"
#include "frames/peakfilters.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <optional>

namespace tessera {

/// What is done about frames whose pixel values are small, such as from 0 to 1.
enum class SmallValues {
    Kept,    ///< nothing
    Scaled,  ///< the frames are to be multiplied by a power of ten
};

/// A threshold for the peak search.
struct PeakThreshold {
    /// In units of the band-passed image, rounded as the log shows it: to 2 decimals from 1 on, and to 4
    /// digits below.
    double dfThreshold = 0;
    /// The factor by which the frames must be multiplied for this threshold: 1, or a power of ten for small
    /// values, whose intensities would otherwise be lost by the one decimal of a peak list.
    double dfScale = 1;
};

/// Eight robust standard deviations of the band-passed image; the median over some frames of the series.
///
/// @param parameters  its radii are used, its threshold is not
/// @param nJobs       frames that are read side by side; the result does not depend on it
/// @return nothing, with a red line, when no frame can be read or all are blank; nothing, without a line,
///         when the report asked to stop
std::optional<PeakThreshold> estimatePeakThreshold(const DataSet& dataSet,
                                                   const PeakHuntingParameters& parameters,
                                                   CPeakFilters& filters, CRunReport& report, int nJobs = 1,
                                                   SmallValues smallValues = SmallValues::Kept);

}  // namespace tessera
