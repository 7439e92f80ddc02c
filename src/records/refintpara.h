// RefIntPara: the window of one peak for two-dimensional integration, and its result.
#pragma once

namespace tessera {

/// The integration window of one peak, a disc with a ring around it, and what was found in it.
struct RefIntPara {
    int nRadius = 0;           ///< radius of the peak disc, pixels
    int nBackground = 0;       ///< width of the background ring, pixels
    int nX = 0;                ///< column of the centre on the raw frame
    int nY = 0;                ///< row of the centre
    int nBackgroundCount = 0;  ///< pixels summed in the ring
    int nPeakCount = 0;        ///< pixels summed in the disc
    float fBackgroundSum = 0;  ///< sum of the pixels of the ring
    float fPeakSum = 0;        ///< sum of the pixels of the disc
    float fIntensity = 0;      ///< 0 when the window does not lie wholly inside the frame
};

}  // namespace tessera
