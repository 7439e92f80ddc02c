// TIFF tags: what programs write into a TIFF file besides its pixels.
#pragma once

#include "imagefiles/frameheader.h"
#include "imagefiles/tiffdirectory.h"

namespace tessera {

/// Adds to a header what the tags of a page tell of microscope and camera: the text of ImageJ, that of
/// instamatic, the structure of EM-MENU, the tags of Olympus SIS, those of DigitalMicrograph exports, and
/// the lines "# key value unit" of Dectris. A number without a unit, or with one that is useless for
/// diffraction, becomes a line of doubt.
void tellTiffTags(CTiffBytes& tiff, const TiffDirectory& directory, FrameHeader& header);

}  // namespace tessera
