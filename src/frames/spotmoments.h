// spotSigma: the width of one spot by weighted second moments.
#pragma once

#include "imaging/imgobj.h"

#include <optional>

namespace tessera {

/// A spot that was measured.
struct MeasuredSpot {
    double dfX = 0;  ///< centre, column and row of the image, pixels
    double dfY = 0;
    double dfSigma = 0;  ///< of the Gaussian of the same moments, pixels
};

/// Measures the spot at a maximum; the method is told at spotsOfFrame().
/// @return none where it is no spot: cut by the image's edge, a flat top, a single pixel, a streak, too wide
std::optional<MeasuredSpot> measureSpot(const CImgObj<float>& img, int nX, int nY);

}  // namespace tessera
