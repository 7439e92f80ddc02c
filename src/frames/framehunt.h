// huntFrame: the diffraction spots of one frame with their intensities.
#pragma once

#include "dataset/maskdata.h"
#include "frames/bandpass.h"
#include "frames/peakfilters.h"
#include "imaging/acmlfft.h"
#include "imaging/imgobj.h"
#include "records/runparameters.h"

#include <QList>

namespace tessera {

/// What is found on one frame: lists of equal length, in row-major order of the positions.
struct FramePeaks {
    QList<double> listX;       ///< column on the raw frame, pixels, whole numbers
    QList<double> listY;       ///< row
    QList<double> listIPoint;  ///< smoothed frame at the position
    QList<double> listI2D;     ///< disc less ring on the smoothed frame; 0 at the frame's edge
    bool bHunted = false;      ///< false: no pixels, or no room for the transform; then nothing is known
    bool bTooMany = false;     ///< more candidates than 1 % of the pixels, which is noise: no peak is taken
    qint64 nBadPixels = 0;     ///< pixels that held no usable number (frameSpectrum)
};

/// Work images of one hunting thread, kept from frame to frame so that they are allocated once.
struct FrameHuntWork {
    CAcmlFft fft;
    CImgObj<COMPLEX> imgWork;  ///< of bandPassRows()
};

/// Hunts one frame: the one path of the run and of the live preview.
///
/// Strict local maxima of the band-passed frame at or above the threshold, outside the mask, and not in a gap
/// of the detector nor as near to one as two widths of the narrow filter: a spot there lacks a part. More
/// than 1 % of the pixels as candidates give no peaks. An image without pixels has none either.
/// @param filters  made to fit; if they fit already they are only read, so threads may share them
FramePeaks huntFrame(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                     const MaskData& mask, CPeakFilters& filters, FrameHuntWork& work);

}  // namespace tessera
