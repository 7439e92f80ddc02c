// The pixels of a page of a TIFF file as an image.
#pragma once

#include "imagefiles/tifflayout.h"
#include "imaging/imgobj.h"

#include <memory>

namespace tessera {

/// Reads a page: counts unscaled, those of pictures by the rule of ReadPicture(), turned as its orientation
/// says.
/// @param strReason  what is wrong, in words, when there is no image
/// @throws std::bad_alloc, also before memory is taken for packed pixels that the machine has no room for
std::unique_ptr<CImgObj<float>> tiffImage(CTiffBytes& tiff, const TiffLayout& layout, QString& strReason);

}  // namespace tessera
