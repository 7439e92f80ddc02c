// PeakPair: two peaks of one frame.
#pragma once

#include "records/peak3d.h"

namespace tessera {

/// Two peaks of one frame, side by side.
struct PeakPair {
    Peak3D peakFirst;
    Peak3D peakSecond;
};

}  // namespace tessera
