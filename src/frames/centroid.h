// refine2DPeakPosition: centroids of peaks within discs.
#pragma once

#include "imaging/imgobj.h"
#include "records/refintpara.h"

#include <list>
#include <vector>

namespace tessera {

/// Replaces the positions by the centroids of the pixels within the windows' discs, in their order.
///
/// A window whose disc and ring together do not lie inside the image leaves its centre (nX, nY), as does one
/// whose pixels give no centroid inside the disc: a sum of 0, or pixels of both signs that nearly cancel.
/// @param listX, listY  column and row in image pixels; their former contents are not read
void refine2DPeakPosition(std::list<double>& listX, std::list<double>& listY, const CImgObj<float>& fImgObj,
                          const std::vector<RefIntPara>& vecRefIntPara);

}  // namespace tessera
