// measureSpot: the width of a spot by weighted second moments.
#pragma once

#include "imaging/imgobj.h"

#include <optional>

namespace tessera {

/// A spot that was measured.
struct MeasuredSpot {
    double dfX = 0;  ///< centre, column and row of the image, pixels
    double dfY = 0;
    double dfSigma = 0;  ///< sigma of the Gaussian with the same moments, pixels
};

/// Measures the spot at a maximum. For the method see spotsOfFrame().
/// @return nothing where it is no good spot: cut by the edge of the image, saturated, a single pixel, a
///         streak, or too wide
std::optional<MeasuredSpot> measureSpot(const CImgObj<float>& img, int nX, int nY);

}  // namespace tessera
