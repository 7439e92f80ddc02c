// suggestPeakSearch: radii of the peak search that follow from the size of the spots.
#pragma once

#include "dataset/parametertable.h"
#include "frames/peakfilters.h"
#include "frames/spotsize.h"
#include "records/runparameters.h"

#include <QList>
#include <QString>

#include <optional>

namespace tessera {

/// A number that a page may take, and why.
struct SuggestedValue {
    ParameterMember member;  ///< whose number it is
    double dfValue = 0;      ///< rounded as the box of the page does it
    QString strWhy;          ///< a short text with the figure that it follows from
};

/// Numbers of a page; none where the data do not tell.
using Suggestion = QList<SuggestedValue>;

/// A suggestion as the box of its member would hold it.
SuggestedValue suggestedValue(ParameterMember member, double dfValue, const QString& strWhy);

/// Radii of the band-pass, of the disc and of the ring around it.
///
/// The narrow Gaussian is as wide as the spots: the filter that gives the highest signal over white noise
/// (North, 1963, Proc. IEEE 51, 1016). Taking off a Gaussian k times as wide as well leaves the share
/// (1 - 2/(1 + k²)) / sqrt(1 + 1/k² - 4/(1 + k²)) of that: 0.89 for k = 2, 0.94 for 2.7, 0.95 for 3, and the
/// smaller k, the closer the background is followed. 2.7 is taken, less where that would reach half the way
/// to the next spot, but not below 2. The disc of the integration reaches three sigmas, or half the way to
/// the next spot, and the ring no further than the edge of the next one.
/// @param size              none: no suggestion
/// @param dfPeakRadius      given by the user: the wide Gaussian keeps its distance from it
Suggestion suggestPeakSearch(const std::optional<SpotSize>& size,
                             const std::optional<double>& dfPeakRadius = std::nullopt);

/// The same from a look at some frames of the series, with a line of the log where they do not tell.
/// @param suggestion  empty where there are no usable spots
/// @param nJobs       frames looked at side by side; the suggestion is the same for each
/// @return false when the report asked to stop or memory is short
bool suggestRadii(const DataSet& dataSet, CRunReport& report, Suggestion& suggestion,
                  const std::optional<double>& dfPeakRadius = std::nullopt, int nJobs = 1);

/// The radii, and the threshold that fits them, from looks at some frames. None of a threshold where no frame
/// tells its noise, and where the decimals of the page are too coarse for it.
/// @param page     numbers that hold where nothing is suggested in their place
/// @param filters  are made for the radii that are suggested
/// @return false when the report asked to stop or memory is short
bool suggestPeakSearch(const DataSet& dataSet, const PeakHuntingParameters& page, CPeakFilters& filters,
                       CRunReport& report, Suggestion& suggestion, int nJobs = 1);

}  // namespace tessera
