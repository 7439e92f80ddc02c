// Filters in Fourier space: Gaussian and ring mask.
#pragma once

#include "imaging/imgobj.h"

#include <vector>

namespace tessera {

/// The rows of what MakeGaussian() makes, to the bit, for whoever has no room for the image.
class CGaussianRows {
public:
    /// For images of that size. @param fSigma  pixels
    CGaussianRows(int nWidth, int nHeight, float fSigma);
    /// Fills row nRow, 0 … nHeight − 1: nWidth floats.
    void fill(int nRow, float* pRow) const;

private:
    int m_nWidth;
    int m_nHeight;
    double m_dfNorm = 0;
    std::vector<double> m_vecTable;  // empty: a single pixel of 1
};

/// A Gaussian of standard deviation fSigma pixels, normalised to a sum of about 1, with its peak at
/// element (0, 0) and wrapped around all four edges. Its transform is a real filter for a spectrum
/// in natural layout.
///
/// Images of any size are served. Below an fSigma of about 0.4 the pixels are too coarse for the curve, and
/// the sum exceeds 1. Where the height of the peak has no finite value (fSigma 0, not a number, or too small
/// to square) the result is the unit impulse: a filter that lets everything pass.
/// @return 1, or 0 for a size that CImgObj::Create refuses
int MakeGaussian(CImgObj<float>& img, int nWidth, int nHeight, float fSigma);

/// A ring around (width/2, height/2), integer halves: 1 where dfInner² ≤ r² ≤ dfOuter², 0 elsewhere.
/// The radii are in pixels and enter as squares: an inner radius of −1 excludes the centre alone.
/// @return 1, or 0 for a null buffer
int MakeRingMask(char* pMask, int nWidth, int nHeight, double dfInner, double dfOuter);

}  // namespace tessera
