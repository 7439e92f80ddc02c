// Grey TIFF: one image of whole numbers in one file, as programs for frames read it.
#pragma once

#include "imaging/imgobj.h"

#include <QByteArray>

namespace tessera {

/// Baseline TIFF, little-endian, one strip, top row first, without compression.
/// @param nBits  16: unsigned, cut off at 0 and 65535; 32: signed. Rounded; what is no number becomes 0.
/// @return empty for an empty image, or one that is too large for the format
/// Source: TIFF 6.0 (Adobe, 1992).
QByteArray greyTiff(const CImgObj<float>& image, int nBits);

}  // namespace tessera
