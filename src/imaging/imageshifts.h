// Shifts of images: swap of quadrants, whole pixels, fractions of a pixel.
#pragma once

#include "imaging/complex.h"

namespace tessera {

/// Swaps the quadrants diagonally, in place: element (0, 0) goes to (width/2, height/2) and back.
/// Takes a spectrum from natural to centred layout and back.
/// @return 1, or 0 for a null buffer or a side below 1
/// @throw const wchar_t* "ShiftCenter: Width and Height should both be even!", data untouched
int ShiftCenter(float* pData, int nWidth, int nHeight);
/// The same for complex elements.
int ShiftCenter(COMPLEX* pData, int nWidth, int nHeight);

/// Moves the image by whole pixels with wrap-around, in place: (x, y) goes to
/// ((x + nDX) mod width, (y + nDY) mod height). Any shifts.
/// @return 1, or 0 for a null buffer or a side below 1
int CyclicShift(float* pData, int nWidth, int nHeight, int nDX, int nDY);
/// The same for complex elements.
int CyclicShift(COMPLEX* pData, int nWidth, int nHeight, int nDX, int nDY);

/// Moves an image by (dfDX, dfDY) pixels through its spectrum, in place, with wrap-around.
///
/// The spectrum must be that of a real image: one half is computed and the other follows as its
/// conjugate. With bCentred the spectrum is in centred layout, otherwise in natural layout. Sides
/// that are odd have no symmetric pairs in centred layout; every element is computed then.
/// @return 1, or 0 for a null buffer or a side below 1
/// @throw const wchar_t* as ShiftCenter, for an odd side in natural layout
int FourierShift(COMPLEX* pData, int nWidth, int nHeight, double dfDX, double dfDY, bool bCentred);

}  // namespace tessera
