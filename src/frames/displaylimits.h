// displayLimits: the values between which a frame is shown when nobody has said which.
#pragma once

#include "imaging/imgobj.h"

#include <QPointF>

#include <optional>

namespace tessera {

/// A disc on a frame, in pixels; the centre of the first pixel is (0, 0).
struct FrameDisc {
    QPointF ptCentre;
    double dfRadius = 0;
};

/// The disc round the brightest place of a frame, which is the direct beam on nearly every one, with a radius
/// of 1/16 of the shorter side: beam and halo have room in it, and no more than an eightieth of the frame is
/// lost. The place is that of the block with the highest mean of pixels, none of which counts for more than
/// the 99.9th percentile, so that a single hot pixel is none.
/// @return none for a frame without a usable pixel
std::optional<FrameDisc> brightestDisc(const CImgObj<float>& image);

struct DisplayLimits {
    double dfLow = 0;   ///< shown black
    double dfHigh = 0;  ///< shown white, above dfLow
};

/// The 1st and the 99.7th percentile of the usable pixels outside a disc.
///
/// Exact: of n values in rising order that of the rank p·(n − 1), rounded down. So three pixels in a thousand
/// are white, which are the spots, and the background is just above black.
/// @return none where the two are the same, as on a frame that is nearly empty
std::optional<DisplayLimits> displayLimits(const CImgObj<float>& image, const std::optional<FrameDisc>& disc);

}  // namespace tessera
