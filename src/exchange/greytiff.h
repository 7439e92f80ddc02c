// Grey TIFF: makes a TIFF file with one image of whole numbers.
#pragma once

#include "imaging/imgobj.h"

#include <QByteArray>

namespace tessera {

/// Makes a baseline TIFF file: little-endian, one strip, top row first, without compression.
/// @param nBits  16: unsigned, limited to 0 and 65535; 32: signed. Values are rounded; NaN becomes 0.
/// @return empty for an empty image, or one that is too large for the format
/// Source: TIFF 6.0 (Adobe, 1992).
QByteArray greyTiff(const CImgObj<float>& image, int nBits);

}  // namespace tessera
