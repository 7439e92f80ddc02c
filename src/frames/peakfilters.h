// CPeakFilters: the Fourier-space filters of peak hunting.
#pragma once

#include "imaging/complex.h"
#include "imaging/imgobj.h"
#include "records/runparameters.h"

namespace tessera {

/// All that the filters depend on; they are made from this record alone.
struct PeakFilterNumbers {
    double m_dfFilterPeakRadius = -1;  ///< sigmas in pixels
    double m_dfFilterBackgroundRadius = -1;
    double m_dfFilterSmoothRadius = -1;
    int m_nFilterWidth = 0;  ///< size of the frame; 0 fits none
    int m_nFilterHeight = 0;

    bool operator==(const PeakFilterNumbers& other) const;
};

/// The numbers of the filters for a frame.
PeakFilterNumbers peakFilterNumbers(const PeakHuntingParameters& parameters, int nWidth, int nHeight);

/// The smoothing and the band-pass filter, with the numbers that they were made for.
///
/// They are kept between frames and runs; updatePeakFilters remakes what no longer fits.
class CPeakFilters : public PeakFilterNumbers {
public:
    /// smoothing + i * band-pass, laid out for TransformFiltered(): G(smoothing radius) and
    /// G(peak radius) - G(background radius) in Fourier space
    CImgObj<COMPLEX> m_imgFilterPair;
    double m_dfImpulse = 0;  ///< size at its pixel of a unit impulse after the band-pass

    float smoothAtZero() const { return m_imgFilterPair.Data()[0].re; }
    float bandPassAtZero() const { return m_imgFilterPair.Data()[0].im; }

    /// Whether both filters were made for exactly these values.
    bool fits(const PeakHuntingParameters& parameters, int nWidth, int nHeight) const;
};

/// Remakes the filters where radii or size differ from what they were made for (exact equality).
///
/// A radius of 0, or one so small that its square vanishes in single precision, means no
/// smoothing at all: its Gaussian is a single pixel of value 1 and its transform 1 everywhere, so
/// that a peak radius of 0 searches the frame itself less its background. Frames may have any size.
/// @return false, with the filters as they were, for a width or height below 1; false, with filters that
///         fit no frame, when there is no transform of that size
bool updatePeakFilters(const PeakHuntingParameters& parameters, int nWidth, int nHeight,
                       CPeakFilters& filters);

}  // namespace tessera
