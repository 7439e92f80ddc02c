// ImageList: the images of one frame file, owned by the list.
#pragma once

#include "imaging/imgobj.h"

#include <memory>
#include <vector>

namespace tessera {

using ImageList = std::vector<std::unique_ptr<CImgObj<float>>>;

}  // namespace tessera
