// fillBadPixels: fills pixels without a usable number from their surroundings, before a transform.
#pragma once

#include "imaging/imgobj.h"

#include <QtGlobal>

namespace tessera {

/// Gives every pixel without a usable number (isUsablePixel()) a value from its surroundings.
///
/// Filling a gap of the detector with the mean of the frame would make a step along the gap wherever the
/// background there differs from the mean, and the band-pass turns such steps into ridges of false peaks.
/// So gaps are bridged. A pixel is interpolated along its row and along its column between the nearest
/// usable pixels on both sides; at the edge of the frame the one pixel there is continued. The two values
/// are averaged with the inverse distance as weight. Pixels whose row and column have no usable pixel, as
/// where gaps cross, are filled from the values given to their neighbours. On a frame without any usable
/// pixel all become 0.
/// @return the number of such pixels
qint64 fillBadPixels(CImgObj<float>& img);

}  // namespace tessera
