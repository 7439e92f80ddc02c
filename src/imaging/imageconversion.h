// Conversion between float images and complex ones.
#pragma once

#include "imaging/complex.h"
#include "imaging/imgobj.h"

namespace tessera {

/// Makes imgComplex the size of imgReal, with the values as real parts and 0 as imaginary parts.
/// @return 1, or 0 for an empty source; the target stays as it was then
int ComplexFromFloat(const CImgObj<float>& imgReal, CImgObj<COMPLEX>& imgComplex);

/// Takes one real number of each of n complex ones, in single precision.
///
/// @param pTarget  room for n values
/// @param nMode    0 amplitude √(re² + im²), 1 phase atan2(im, re) in radians, 2 real part,
///                 3 imaginary part
/// @return 1, or 0 for another mode or a null buffer; nothing is written then
int ComplexToFloat(const COMPLEX* pSource, float* pTarget, int n, int nMode);

}  // namespace tessera
