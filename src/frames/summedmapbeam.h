// findBeamInSummedMap: the coarse position of the direct beam, from a summed spectrum.
#pragma once

#include "imaging/complex.h"
#include "imaging/imgobj.h"

namespace tessera {

/// Finds the first maximum of the image of a spectrum after a Gaussian blur of sigma 20 pixels.
///
/// @param imgSumFT  centred layout (zero frequency at (width/2, height/2)), even sides
/// @param nX, nY    take column and row in the image, pixels
/// @return false, with nX and nY as they were, for an image without pixels or with an odd side
bool findBeamInSummedMap(const CImgObj<COMPLEX>& imgSumFT, int& nX, int& nY);

}  // namespace tessera
