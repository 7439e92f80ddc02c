// CPeakFilters: the Fourier-space filters of peak hunting.
#pragma once

#include "imaging/complex.h"
#include "imaging/imgobj.h"
#include "records/runparameters.h"

namespace tessera {

/// The smoothing and the band-pass filter, with what they were made for.
///
/// Both multiply a spectrum in natural layout (zero frequency at element (0, 0)). They are kept
/// between frames and runs; updatePeakFilters remakes what no longer fits.
class CPeakFilters {
public:
    CImgObj<float> m_imgFilterSmooth;    ///< G(smoothing radius) in Fourier space
    CImgObj<float> m_imgFilterBandPass;  ///< G(peak radius) - G(background radius) in Fourier space
    CImgObj<COMPLEX> m_imgFilterPair;    ///< smoothing + i * band-pass, laid out for TransformFiltered()
    double m_dfFilterPeakRadius = -1;    ///< sigma in pixels that the filters were made for
    double m_dfFilterBackgroundRadius = -1;
    double m_dfFilterSmoothRadius = -1;
    int m_nFilterWidth = 0;  ///< frame size that the filters were made for
    int m_nFilterHeight = 0;

    /// Whether both filters were made for exactly these values.
    bool fits(const PeakHuntingParameters& parameters, int nWidth, int nHeight) const;
};

/// Remakes the filters whose radii or size differ from what they were made for (exact equality).
///
/// A radius of 0, or one so small that its square vanishes in single precision, means no
/// smoothing at all: its Gaussian is a single pixel of value 1 and its transform 1 everywhere, so
/// that a peak radius of 0 searches the frame itself less its background. Frames may have any size.
/// @return false, with the filters as they were, for a width or height below 1; false, with filters that
///         fit no frame, when there is no transform of that size
bool updatePeakFilters(const PeakHuntingParameters& parameters, int nWidth, int nHeight,
                       CPeakFilters& filters);

}  // namespace tessera
