// Arithmetic on images and spectra, element by element.
#pragma once

#include "imaging/complex.h"

namespace tessera {

// Over n elements, in single precision. All return 1, or 0 for a null buffer.

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

}  // namespace tessera
