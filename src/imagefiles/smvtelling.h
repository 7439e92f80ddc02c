// frameHeaderOfSmv: what the items of an SMV header tell of the microscope and the camera.
#pragma once

#include "imagefiles/frameheader.h"
#include "imagefiles/smvheader.h"

namespace tessera {

/// What is subtracted from each count: IMAGE_PEDESTAL where it is a whole number that pixels can have, else
/// 0.
int smvPedestal(const SmvHeader& smv);

/// All but the size, which needs the length of the file. No item of the format tells the direction of the
/// rotation axis.
FrameHeader frameHeaderOfSmv(const SmvHeader& smv);

}  // namespace tessera
