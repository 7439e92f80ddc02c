// refine2DPeakPosition: centroids of peaks within discs.
#pragma once

#include "imaging/imgobj.h"
#include "records/refintpara.h"

#include <list>
#include <vector>

namespace tessera {

/// Replaces the positions by the centroids of the pixels within the discs of the windows, in the order of
/// the windows.
///
/// Where disc and ring are not wholly inside the image, the position is the centre (nX, nY) of the window.
/// The same holds where the pixels give no centroid inside the disc, since their sum is 0, or pixels of
/// both signs nearly cancel.
/// @param listX, listY  take column and row in image pixels; their former contents are not used
void refine2DPeakPosition(std::list<double>& listX, std::list<double>& listY, const CImgObj<float>& fImgObj,
                          const std::vector<RefIntPara>& vecRefIntPara);

}  // namespace tessera
