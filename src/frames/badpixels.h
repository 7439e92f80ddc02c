// replaceBadPixels: pixels that hold no usable number, before a transform spreads them.
#pragma once

#include "imaging/imgobj.h"

#include <QString>

#include <cmath>

namespace tessera {

/// Whether a pixel holds a finite number of at most 1e30 in size: sums over frames of larger ones
/// run out of single precision.
inline bool isUsablePixel(float f)
{
    return std::fabs(f) <= 1e30f;
}

/// Mean of the usable pixels, 0 if there are none.
/// @param nBad  takes the number of the others
double meanOfUsablePixels(const CImgObj<float>& img, qint64& nBad);

/// Gives every pixel that holds no usable number the mean of the others.
/// @return how many there were
qint64 replaceBadPixels(CImgObj<float>& img);

/// The line that tells the user of it. @param nFrame  index from 0
QString badPixelLine(int nFrame, qint64 nBad);

}  // namespace tessera
