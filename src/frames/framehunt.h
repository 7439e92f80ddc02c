// huntFrame: finds the diffraction spots of one frame with their intensities.
#pragma once

#include "dataset/maskdata.h"
#include "frames/bandpass.h"
#include "frames/peakfilters.h"
#include "imaging/acmlfft.h"
#include "imaging/imgobj.h"
#include "records/runparameters.h"

#include <QList>

namespace tessera {

/// The peaks of one frame: lists of equal length, row by row.
struct FramePeaks {
    QList<double> listX;       ///< column on the raw frame, pixels, whole numbers
    QList<double> listY;       ///< row
    QList<double> listIPoint;  ///< value of the smoothed frame at the position
    QList<double> listI2D;     ///< disc minus ring on the smoothed frame; 0 where the window crosses the edge
    bool bHunted = false;   ///< false: the frame has no pixels, or memory was lacking; the peaks are unknown
    bool bTooMany = false;  ///< more candidates than 1 % of the pixels, which is noise: there are no peaks
    qint64 nBadPixels = 0;  ///< pixels without a usable number, see frameSpectrum()
};

/// Work images of one thread. They are kept from frame to frame to be allocated only once.
struct FrameHuntWork {
    CAcmlFft fft;
    CImgObj<COMPLEX> imgWork;  ///< work space of bandPassRows()
};

/// Finds the peaks of one frame. The run over a series and the live preview both use this function.
///
/// Peaks are strict local maxima of the band-passed frame at or above the threshold and outside the mask.
/// Those in a gap of the detector, or within two widths of the narrow filter from one, are left out, as a
/// part of the spot may be missing. If the candidates are more than 1 % of the pixels, there are no peaks,
/// nor are there any on an image without pixels.
/// @param filters  made anew if they do not fit; otherwise only read, so that threads may share them
FramePeaks huntFrame(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                     const MaskData& mask, CPeakFilters& filters, FrameHuntWork& work);

}  // namespace tessera
