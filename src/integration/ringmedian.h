// Ring medians: subtracts the halo of the direct beam from a frame.
#pragma once

#include "geometry/diffractiongeometry.h"
#include "imaging/imgobj.h"

#include <vector>

namespace tessera {

/// Subtracts from each usable pixel the median of its ring about the beam, one pixel wide. The median is that
/// of the halo, which is round, since spots cover little of a ring.
/// @param beam        direct beam, raw pixels
/// @param listMasked  row by row, 1 for pixels that do not enter the medians
void takeOffRings(CImgObj<float>& image, const FramePlace& beam, const std::vector<char>& listMasked);

}  // namespace tessera
