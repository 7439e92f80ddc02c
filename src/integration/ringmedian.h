// Ring medians: the halo of the direct beam, taken off a frame.
#pragma once

#include "geometry/diffractiongeometry.h"
#include "imaging/imgobj.h"

#include <vector>

namespace tessera {

/// Takes from each usable pixel the median of the ring about the beam that it lies on, one pixel wide: spots
/// are few of it, and the diffuse halo is round.
/// @param beam        raw pixels
/// @param listMasked  row by row, 1 for pixels that are left out of the medians
void takeOffRings(CImgObj<float>& image, const FramePlace& beam, const std::vector<char>& listMasked);

}  // namespace tessera
