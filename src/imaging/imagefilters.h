// Filters in Fourier space: arithmetic on spectra, Gaussian and ring mask.
#pragma once

#include "imaging/complex.h"
#include "imaging/imgobj.h"

// Element by element over n elements, in single precision. All return 1, or 0 for a null buffer.

/// a += b.
int AddComplex(COMPLEX* pA, const COMPLEX* pB, int n);
/// a *= df, taken to single precision first.
int ScaleComplex(COMPLEX* pA, int n, double df);
/// Both parts of a times the (signed) byte of the mask.
int MultiplyByMask(COMPLEX* pA, const char* pMask, int n);
/// Both parts of a times f.
int MultiplyByFloat(COMPLEX* pA, const float* pF, int n);
/// a += b.
int AddFloat(float* pA, const float* pB, int n);

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
