// Peak hunting: the diffraction spots of all frames with their intensities.
#pragma once

#include "app/dataset/dataset.h"
#include "app/records/runparameters.h"
#include "app/records/runreport.h"
#include "frames/peakfilters.h"
#include "imaging/acmlfft.h"
#include "imaging/imgobj.h"

#include <QList>

#include <functional>

/// What is found on one frame: lists of equal length, in row-major order of the positions.
struct FramePeaks {
    QList<double> listX;                ///< column on the raw frame, pixels, whole numbers
    QList<double> listY;                ///< row
    QList<double> listIPoint;           ///< smoothed frame at the position
    QList<double> listI2D;              ///< disc less ring on the smoothed frame; 0 at the frame's edge
    qint64 nBadPixels = 0;              ///< pixels that held no usable number (frameSpectrum)
};

/// Work images of one hunting thread, kept from frame to frame so that they are allocated once.
struct FrameHuntWork {
    CAcmlFft fft;
    CImgObj<COMPLEX> imgSpectrum;
    CImgObj<COMPLEX> imgProduct;
    CImgObj<float> imgSmooth;    ///< the smoothed frame
    CImgObj<float> imgBandPass;  ///< the band-passed frame
};

/// Spectrum of a frame in natural layout.
///
/// One pixel without a usable number (infinite, NaN, or beyond 1e30 in size) would spoil every
/// pixel of the filtered frame; such pixels take part with the mean of the others, or 0 if there
/// are none. The mean goes around the transform rather than through it, so that a constant frame
/// stays exactly constant at every size.
/// @return the number of pixels so replaced; -1, with nothing written, for an image without pixels
qint64 frameSpectrum(const CImgObj<float>& imgFrame, CAcmlFft& fft, CImgObj<COMPLEX>& imgSpectrum);

/// The band-passed image of a frame from its spectrum; values below -100 become 0.
///
/// Both filters are real and even, so smoothed + i * band-passed needs one backward transform.
/// @param imgSpectrum  natural layout, not changed
/// @param filters      brought up to date for the parameters and the size
/// @param imgProduct   work space
/// @param pSmooth      takes the smoothed frame where given
/// @return false, with nothing written, for an image without pixels
bool calBandPassImage(const CImgObj<COMPLEX>& imgSpectrum, const PeakHuntingParameters& parameters,
                      CPeakFilters& filters, CAcmlFft& fft, CImgObj<COMPLEX>& imgProduct,
                      CImgObj<float>& imgBandPass, CImgObj<float>* pSmooth = nullptr);

/// Hunts one frame: the one path of the run and of the live preview.
///
/// Filters that fit the frame already are only read, so threads may share them.
/// An image without pixels has no peaks.
FramePeaks huntFrame(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                     const MaskData& mask, CPeakFilters& filters, FrameHuntWork& work);

/// How a run of peak hunting works and whom it calls, all from the calling thread.
struct PeakHuntingOptions {
    int nJobs = 1;      ///< frames hunted side by side, from 1; the result is the same for each
    bool bSave = true;  ///< write the peak list beside the project
    /// After a frame's line, in frame order; its images stand in m_vecFrameImage by then.
    std::function<void(int nFrame, const QList<Peak3D>& listPeak)> fnFrameDone;
    /// Mapping and merging: after the new peaks stand in the data set and on disk, before the end line.
    std::function<void()> fnAfterStored;
};

/// Hunts all frames of the series and replaces m_listPeakFrame and the peak list ".pk".
///
/// At most nJobs + 1 frames are in memory. Positions are whole pixels of the raw frame. A run that
/// was stopped (report.goOn()) or met a frame that cannot be loaded says so in red, leaves
/// m_listPeakFrame as it was and writes nothing. A peak list that cannot be written is a red line
/// only. A run during a run (m_bHuntingRunning set) is a stop request: the flag is cleared, which
/// the run under way sees after its frame.
/// @return true if all frames were hunted
bool runPeakHunting(DataSet& dataSet, const PeakHuntingParameters& parameters, CPeakFilters& filters,
                    CRunReport& report, const PeakHuntingOptions& options = {});
