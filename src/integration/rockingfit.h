// RockingFit: width and place of one strong reflection's rocking curve.
#pragma once

#include "integration/rockingcurve.h"
#include "integration/spotmeasure.h"

#include <optional>
#include <vector>

namespace tessera {

struct RockingFit {
    double dfTotal = 0;   ///< counts of the whole curve
    double dfOff = 0;     ///< Å⁻¹, excitation error at which it has its middle
    double dfWidth = 0;   ///< Å⁻¹, sigma
    double dfMisfit = 0;  ///< root of the mean square of what is left, as a part of the strongest frame
};

/// Fits total, place and, if asked to, width to the counts of the frames of a passage.
/// @param curve      start
/// @param bFitWidth  else the width stays that of the curve
/// @return none where the fit runs away
std::optional<RockingFit> fitRocking(const std::vector<SpotMeasure>& listMeasure, const RockingCurve& curve,
                                     double dfDStar, double dfGain, bool bFitWidth);

/// Width and mosaicity out of the widths at their d*: medians of groups, and the line of their squares over
/// d*². Leaves the curve as it is with fewer than ten.
struct WidthAtDStar {
    double dfDStar = 0;
    double dfWidth = 0;
};
void learnWidth(std::vector<WidthAtDStar> listWidth, RockingCurve& curve);

}  // namespace tessera
