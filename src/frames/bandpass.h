// Band pass: the band-passed and the smoothed image of a frame, made from its spectrum.
#pragma once

#include "frames/peakfilters.h"
#include "imaging/acmlfft.h"
#include "imaging/complex.h"
#include "imaging/imgobj.h"
#include "records/runparameters.h"

#include <QtGlobal>

namespace tessera {

/// The spectrum of a frame. As the frame is real, the half that CAcmlFft::TransformReal() makes determines
/// the other one.
struct FrameSpectrum {
    CImgObj<COMPLEX> imgHalf;  ///< CAcmlFft::HalfCount() elements in one row
    int nWidth = 0;            ///< of the frame, pixels
    int nHeight = 0;
};

/// Computes the spectrum of a frame.
///
/// A single pixel without a usable number (infinite, NaN, or beyond 1e30 in magnitude) would spoil every
/// pixel of the filtered frame, so such pixels are filled from those around them (fillBadPixels()). The mean
/// is subtracted before the transform and added to the zero frequency afterwards, so that the spectrum of a
/// constant frame is exactly 0 at all other frequencies, whatever its size.
/// @return the number of filled pixels; -1, with nothing written, for an image without pixels
qint64 frameSpectrum(const CImgObj<float>& imgFrame, CAcmlFft& fft, FrameSpectrum& spectrum);

/// Makes the smoothed and the band-passed image of a frame from its spectrum.
///
/// Both filters are real and even, so both images come out of one backward transform, as its real and
/// imaginary part. The zero frequency is added as a constant afterwards, so that a constant frame stays
/// exactly constant.
/// @param filters             of the size of the frame
/// @param imgProduct          work space
/// @param pSmooth, pBandPass  may be null; take the images
/// @return false, with nothing written, for an empty spectrum or filters of another size
bool filterSpectrum(const FrameSpectrum& spectrum, const CPeakFilters& filters, CAcmlFft& fft,
                    CImgObj<COMPLEX>& imgProduct, CImgObj<float>* pSmooth, CImgObj<float>* pBandPass);

/// Makes the band-passed image of a frame from its spectrum. Values below -100 become 0.
///
/// @param filters     made anew unless they fit the parameters and the size already
/// @param imgProduct  work space
/// @param pSmooth     may be null; takes the smoothed frame
/// @return false, with nothing written, for an empty spectrum
bool calBandPassImage(const FrameSpectrum& spectrum, const PeakHuntingParameters& parameters,
                      CPeakFilters& filters, CAcmlFft& fft, CImgObj<COMPLEX>& imgProduct,
                      CImgObj<float>& imgBandPass, CImgObj<float>* pSmooth = nullptr);

/// Makes the band-passed image of a frame row by row. The only memory used beside the frame and the filters
/// is the work space. The values are those of calBandPassImage() to the bit, except that values below -100
/// are kept.
///
/// @param filters      made anew unless they fit already, before the work space is allocated
/// @param imgWork      work space, allocated as needed
/// @param bKeepSmooth  true: imgWork has the smoothed frame afterwards, whose pixels CAcmlFft::KeptPixel()
///                     returns
/// @param fnRow        called with each row of the band-passed image, in ascending order
/// @return the number of unusable pixels, as frameSpectrum(); -1, without a call of fnRow, for an image
///         without pixels or where the transform failed
qint64 bandPassRows(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                    CPeakFilters& filters, CAcmlFft& fft, CImgObj<COMPLEX>& imgWork, bool bKeepSmooth,
                    const CAcmlFft::FnTakeRow& fnRow);

}  // namespace tessera
