// RockingFit: fits the rocking curve of one strong reflection.
#pragma once

#include "integration/rockingcurve.h"
#include "integration/spotmeasure.h"

#include <optional>
#include <vector>

namespace tessera {

/// A fitted rocking curve.
struct RockingFit {
    double dfTotal = 0;   ///< counts of the whole curve
    double dfOff = 0;     ///< excitation error at the maximum, Å⁻¹
    double dfWidth = 0;   ///< sigma, Å⁻¹
    double dfMisfit = 0;  ///< rms of the residuals, relative to the strongest frame
};

/// Whether fitRocking() refines the width of the curve.
enum class RockingWidth { Fixed, Fitted };

/// Fits total, position and, if asked to, width of the rocking curve to the counts on the frames of a
/// passage.
/// @param curve  starting values
/// @param width  Fixed: the width is that of the curve
/// @return none if the fit does not converge
std::optional<RockingFit> fitRocking(const std::vector<SpotMeasure>& listMeasure, const RockingCurve& curve,
                                     double dfDStar, double dfGain, RockingWidth width);

/// The width of the rocking curve of one reflection.
struct WidthAtDStar {
    double dfDStar = 0;  ///< Å⁻¹
    double dfWidth = 0;  ///< sigma, Å⁻¹
};
/// Determines width and mosaicity of a curve from the widths of single reflections, by a line through the
/// squares of group medians over d*². With fewer than ten widths the curve is left as it was.
void learnWidth(std::vector<WidthAtDStar> listWidth, RockingCurve& curve);

}  // namespace tessera
