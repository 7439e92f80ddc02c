// TIFF pixels: reads the pixels of a page of a TIFF file as an image.
#pragma once

#include "imagefiles/tifflayout.h"
#include "imaging/imgobj.h"

#include <memory>

namespace tessera {

/// Reads a page: counts without scaling, pictures by the rule of ReadPicture(), rotated as the orientation
/// tells.
/// @param strReason  takes what is wrong when there is no image
/// @throws std::bad_alloc, also before memory for packed pixels is allocated that is not available
std::unique_ptr<CImgObj<float>> tiffImage(CTiffBytes& tiff, const TiffLayout& layout, QString& strReason);

}  // namespace tessera
