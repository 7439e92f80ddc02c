// CPeakFilters: the Fourier-space filters of the peak search.
#pragma once

#include "imaging/complex.h"
#include "imaging/imgobj.h"
#include "records/runparameters.h"

namespace tessera {

/// The numbers that determine the filters.
struct PeakFilterNumbers {
    double m_dfFilterPeakRadius = -1;  ///< sigmas in pixels
    double m_dfFilterBackgroundRadius = -1;
    double m_dfFilterSmoothRadius = -1;
    int m_nFilterWidth = 0;  ///< size of the frame; 0 for filters that fit no frame
    int m_nFilterHeight = 0;

    /// Whether all numbers are equal.
    bool operator==(const PeakFilterNumbers& other) const;
};

/// The numbers for a frame.
PeakFilterNumbers peakFilterNumbers(const PeakHuntingParameters& parameters, int nWidth, int nHeight);

/// The smoothing and the band-pass filter with the numbers that they were made for. They are kept between
/// frames and runs, and updatePeakFilters() makes them anew when they no longer fit.
class CPeakFilters : public PeakFilterNumbers {
public:
    /// smoothing + i * band-pass in the layout of TransformFiltered(): G(smoothing radius) and G(peak
    /// radius) - G(background radius) in Fourier space
    CImgObj<COMPLEX> m_imgFilterPair;
    double m_dfImpulse = 0;  ///< height at its pixel of a unit impulse after the band-pass

    /// The smoothing filter at the zero frequency.
    float smoothAtZero() const { return m_imgFilterPair.Data()[0].re; }
    /// The band-pass filter at the zero frequency.
    float bandPassAtZero() const { return m_imgFilterPair.Data()[0].im; }

    /// Whether both filters were made for exactly these values.
    bool fits(const PeakHuntingParameters& parameters, int nWidth, int nHeight) const;
};

/// Makes the filters anew where radii or size differ from those that they were made for (exact equality).
///
/// A radius of 0, or one so small that its square vanishes in single precision, means no smoothing: its
/// Gaussian is a single pixel of value 1, and the transform of it is 1 everywhere. So a peak radius of 0
/// searches the frame itself minus its background. Frames may have any size.
/// @return false, with the filters as they were, for a width or height below 1; false, with filters that
///         fit no frame, where a transform of that size failed
bool updatePeakFilters(const PeakHuntingParameters& parameters, int nWidth, int nHeight,
                       CPeakFilters& filters);

}  // namespace tessera
