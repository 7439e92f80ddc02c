// CCorrelation: the correlation map of two images, and its peak to a fortieth of a pixel.
#pragma once

#include "imaging/acmlfft.h"
#include "imaging/cdf2.h"
#include "imaging/complex.h"

#include <memory>

namespace tessera {

/// Correlates two images of one size in Fourier space. Made for one call: tables and plan go with it.
/// Where memory runs out, as for a transform, std::bad_alloc is thrown.
class CCorrelation {
public:
    /// 0 plain cross-correlation, 1 amplitude-compressed correlation, 2 phase correlation.
    void SetMethod(int nMethod) { m_nMethod = nMethod; }

    /// The product v = conj(a) × b of two spectra of real images, weighted by the method, in natural
    /// layout and single precision.
    ///
    /// Method 0 gives v, 1 gives v / (√|v| + 10000), 2 gives v / (|v| + 100000000), and another method
    /// gives v. Where |v|² leaves the range of a float, |v| is formed in double precision.
    /// @return null when a or b is null or a side is below 1
    std::unique_ptr<COMPLEX[]> CrossSpectrum(int nWidth, int nHeight, const COMPLEX* pA,
                                             const COMPLEX* pB) const;

    /// The cross spectrum of copies of a and b, or with bInverse their correlation map.
    ///
    /// With bTransformed a and b are spectra in centred layout (zero frequency at (width/2,
    /// height/2)), otherwise images as complex numbers. Any sides: powers of two go through CAcmlFft,
    /// others through CDF2.
    /// @return natural layout: zero frequency or zero shift at element (0, 0); null as CrossSpectrum
    std::unique_ptr<COMPLEX[]> CorrelationMap(int nWidth, int nHeight, const COMPLEX* pA, const COMPLEX* pB,
                                              bool bInverse, bool bTransformed);

    /// Finds the peak of a correlation map in natural layout, to 0.025 pixel.
    ///
    /// The 10 × 10 pixels around the first maximum are enlarged 40 times by ResizeBicubic. A maximum
    /// near an edge shifts the map cyclically, so the map is changed. A map with a side below 10 is
    /// continued periodically instead and stays as it is; the result lies in 0 .. side then.
    /// @param dfPeak  value of the map at its first maximum
    /// @param fDX, fDY  position of the peak, pixels from element (0, 0)
    /// @return 1; 0 with nothing changed for a null map or a side below 1; 0 with the position (0, 0) for a
    ///         map without a peak: its finite values differ by no more than rounding, or it has none, as
    ///         blank frames give
    int FindCorrelationPeak(float* pMap, int nWidth, int nHeight, double& dfPeak, float& fDX,
                            float& fDY) const;

private:
    void Transform(COMPLEX* pData, int nWidth, int nHeight, bool bForward);

    CDF2 m_df2;
    CAcmlFft m_fft;
    int m_nMethod = 0;
};

/// Measures how far image b is moved with respect to image a.
///
/// If b is a moved by (dx, dy), the result is (dx, dy), in (−width/2, width/2] and likewise in y.
/// @param nMethod       0, 1 or 2, as CCorrelation::SetMethod
/// @param bTransformed  a and b are spectra in centred layout instead of images
/// @param pbPeakFound   may be null; takes whether the map has a peak. Where it has none, as with a blank
///                      frame, the shift is (0, 0) and means nothing
/// @return the correlation map with its zero-shift point at (width/2, height/2), integer halves; null
///         for an unknown method, null input or a side below 1, with the outputs as they were
std::unique_ptr<float[]> Correlate(const COMPLEX* pA, const COMPLEX* pB, int nWidth, int nHeight, int nMethod,
                                   double& dfPeak, double& dfShiftX, double& dfShiftY,
                                   bool bTransformed = false, bool* pbPeakFound = nullptr);

}  // namespace tessera
