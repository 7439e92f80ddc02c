// displayLimits: the grey values that are shown black and white as long as the user has not chosen them.
#pragma once

#include "imaging/imgobj.h"

#include <QPointF>

#include <optional>

namespace tessera {

/// A disc on a frame, in pixels; (0, 0) is the centre of the first pixel.
struct FrameDisc {
    QPointF ptCentre;
    double dfRadius = 0;
};

/// The disc around the brightest place of a frame, which is nearly always the direct beam. Its radius is
/// 1/16 of the shorter side, enough for beam and halo, and it covers no more than an eightieth of the
/// frame. The place is the block with the highest mean of its pixels. Pixels above the 99.9th percentile
/// count as that percentile, so that a single hot pixel does not decide.
/// @return nothing for a frame without a usable pixel
std::optional<FrameDisc> brightestDisc(const CImgObj<float>& image);

/// The range of grey values that is shown.
struct DisplayLimits {
    double dfLow = 0;   ///< the value shown black
    double dfHigh = 0;  ///< the value shown white, above dfLow
};

/// The 1st and the 99.7th percentile of the usable pixels outside a disc. So three pixels in a thousand are
/// white, mostly those of the spots, and the background is nearly black.
///
/// The percentile p of n values in ascending order is the one of rank p·(n − 1), rounded down.
/// @return nothing where both are equal, as on a frame that is nearly empty
std::optional<DisplayLimits> displayLimits(const CImgObj<float>& image, const std::optional<FrameDisc>& disc);

}  // namespace tessera
