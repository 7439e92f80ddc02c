// fillBadPixels: pixels that hold no usable number take what their surroundings tell, before a transform.
#pragma once

#include "imaging/imgobj.h"

#include <QtGlobal>

namespace tessera {

/// Gives every pixel without a usable number (isUsablePixel()) a value from its surroundings.
///
/// A transform spreads each step of a frame: the mean of the frame in a gap of the detector makes an edge
/// along it wherever the background there is another one, and the band-pass turns edges into ridges of peaks.
/// So a gap is bridged: along its row and along its column, a pixel is interpolated between the nearest
/// usable ones on both sides, at the edge of the frame the one there is goes on, and the two ways are
/// averaged, the shorter one counting more (by the inverse of its length). Pixels whose row and column hold
/// none, as where gaps cross, take what their neighbours were given. All of a frame without any become 0.
/// @return how many pixels there were
qint64 fillBadPixels(CImgObj<float>& img);

}  // namespace tessera
