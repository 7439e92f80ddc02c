// What programs leave in a TIFF file beside its pixels.
#pragma once

#include "imagefiles/frameheader.h"
#include "imagefiles/tiffdirectory.h"

namespace tessera {

/// Adds to a header what the tags of a page tell of microscope and camera: the text of ImageJ, that of
/// instamatic, the structure of EM-MENU, the tags of Olympus SIS, those of DigitalMicrograph's export, and
/// the lines "# key value unit" of Dectris. What has no unit, or one that is no use for diffraction, becomes
/// a line of doubt.
void tellTiffTags(CTiffBytes& tiff, const TiffDirectory& directory, FrameHeader& header);

}  // namespace tessera
