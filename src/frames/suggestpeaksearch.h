// suggestPeakSearch: proposes parameters of the peak search from the size of the spots.
#pragma once

#include "dataset/parametertable.h"
#include "frames/peakfilters.h"
#include "frames/spotsize.h"
#include "records/runparameters.h"

#include <QList>
#include <QString>

#include <optional>

namespace tessera {

/// A value proposed for a parameter, and why.
struct SuggestedValue {
    ParameterMember member;  ///< the parameter
    double dfValue = 0;      ///< rounded as the box of the page rounds it
    QString strWhy;          ///< a short text with the measured number that it follows from
};

/// Proposed values of a page; parameters for which the data give no value are missing.
using Suggestion = QList<SuggestedValue>;

/// A proposal with its value rounded as the box of its parameter rounds it.
SuggestedValue suggestedValue(ParameterMember member, double dfValue, const QString& strWhy);

/// Proposes the radii of the band-pass, of the disc and of the ring around it.
///
/// The narrow Gaussian is as wide as the spots, which is the filter with the highest ratio of signal to
/// white noise (North, 1963, Proc. IEEE 51, 1016). Subtracting a Gaussian k times as wide reduces the ratio
/// by the factor (1 - 2/(1 + k²)) / sqrt(1 + 1/k² - 4/(1 + k²)): 0.89 for k = 2, 0.94 for 2.7, 0.95 for 3.
/// A smaller k follows the background more closely. 2.7 is chosen, or less where that would reach half the
/// distance to the next spot, but at least 2. The disc of the integration has a radius of three sigmas, or
/// half the distance to the next spot, and the ring ends at the edge of the next spot.
/// @param size          nothing: no proposal
/// @param dfPeakRadius  narrow radius if the user has given it; the wide radius is then proposed in
///                      proportion to it
Suggestion suggestPeakSearch(const std::optional<SpotSize>& size,
                             const std::optional<double>& dfPeakRadius = std::nullopt);

/// Does the same with the spots of some frames of the series, and logs a line where there are no usable
/// spots.
/// @param nJobs  frames that are read side by side; the result does not depend on it
/// @return empty where there are no usable spots; nothing when the report asked to stop or memory is short
std::optional<Suggestion> suggestRadii(const DataSet& dataSet, CRunReport& report,
                                       const std::optional<double>& dfPeakRadius = std::nullopt,
                                       int nJobs = 1);

/// Proposes the radii, and the threshold that belongs to them, from some frames. No threshold is proposed
/// where the noise of no frame can be measured, or where the decimals of the page are too coarse for it.
/// @param page        parameters for which nothing is proposed keep these values
/// @param filters     are made for the proposed radii
/// @return nothing when the report asked to stop or memory is short
std::optional<Suggestion> suggestPeakSearch(const DataSet& dataSet, const PeakHuntingParameters& page,
                                            CPeakFilters& filters, CRunReport& report, int nJobs = 1);

}  // namespace tessera
