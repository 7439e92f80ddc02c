// The band-passed and the smoothed image of a frame, through its spectrum.
#pragma once

#include "frames/peakfilters.h"
#include "imaging/acmlfft.h"
#include "imaging/complex.h"
#include "imaging/imgobj.h"
#include "records/runparameters.h"

#include <QtGlobal>

namespace tessera {

/// What of a frame's spectrum says all of it: the half that CAcmlFft::TransformReal() makes.
struct FrameSpectrum {
    CImgObj<COMPLEX> imgHalf;  ///< HalfCount() elements
    int nWidth = 0;            ///< of the frame, pixels
    int nHeight = 0;
};

/// Spectrum of a frame.
///
/// One pixel without a usable number (infinite, NaN, or beyond 1e30 in size) would spoil every
/// pixel of the filtered frame; such pixels take part with what those around them tell
/// (fillBadPixels()). The mean goes around the transform rather than through it, so that a constant frame
/// has a zero frequency and exact zeros elsewhere at every size.
/// @return the number of pixels so filled; -1, with nothing written, for an image without pixels
qint64 frameSpectrum(const CImgObj<float>& imgFrame, CAcmlFft& fft, FrameSpectrum& spectrum);

/// Smoothed and band-passed image of a frame from its spectrum, by filters that fit its size.
///
/// Both filters are real and even, so smoothed + i * band-passed takes one backward transform. The
/// zero frequency is added as a constant after it: a constant frame stays exactly constant.
/// @param imgProduct   work space
/// @param pSmooth, pBandPass  take the images where given
/// @return false, with nothing written, for no pixels or filters of another size
bool filterSpectrum(const FrameSpectrum& spectrum, const CPeakFilters& filters, CAcmlFft& fft,
                    CImgObj<COMPLEX>& imgProduct, CImgObj<float>* pSmooth, CImgObj<float>* pBandPass);

/// The band-passed image of a frame from its spectrum; values below -100 become 0.
///
/// @param filters  brought up to date for the parameters and the size; only read if they fit already
/// @param pSmooth  takes the smoothed frame where given
/// @return false, with nothing written, for an image without pixels
bool calBandPassImage(const FrameSpectrum& spectrum, const PeakHuntingParameters& parameters,
                      CPeakFilters& filters, CAcmlFft& fft, CImgObj<COMPLEX>& imgProduct,
                      CImgObj<float>& imgBandPass, CImgObj<float>* pSmooth = nullptr);

/// The band-passed image of a frame row by row, to the bit that of calBandPassImage() but for what that makes
/// 0, in the least memory: beside frame and filters there is nothing but the work space.
///
/// @param filters      brought up to date first, before the work space is made
/// @param imgWork      work space, made to fit; with bKeepSmooth it holds the smoothed frame at the end, of
/// which
///                     CAcmlFft::KeptPixel() tells pixels
/// @param fnRow        called for each row, upwards
/// @return the number of bad pixels, as frameSpectrum(); -1, with nothing called, for an image without pixels
/// or
///         without a transform
qint64 bandPassRows(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                    CPeakFilters& filters, CAcmlFft& fft, CImgObj<COMPLEX>& imgWork, bool bKeepSmooth,
                    const CAcmlFft::FnTakeRow& fnRow);

}  // namespace tessera
