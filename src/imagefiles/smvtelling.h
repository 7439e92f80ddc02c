// frameHeaderOfSmv: what the items of an SMV header tell of the microscope and the camera.
#pragma once

#include "imagefiles/frameheader.h"
#include "imagefiles/smvheader.h"

namespace tessera {

/// The number to be subtracted from each count: IMAGE_PEDESTAL where it is a whole number within the range
/// of pixels, else 0.
int smvPedestal(const SmvHeader& smv);

/// The header without the size, which depends on the length of the file. No item of the format gives the
/// direction of the rotation axis.
FrameHeader frameHeaderOfSmv(const SmvHeader& smv);

}  // namespace tessera
