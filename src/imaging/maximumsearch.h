// Search for the first maximum of an image or an array.
#pragma once

namespace tessera {

/// Finds the first maximum in row-major order; a later equal value does not replace it.
///
/// Samples that are not numbers are passed over, unless there are no others. A width or height below
/// 1 gives the first element and position (0, 0). The outputs may be null.
/// @return 1, or 0 for a null buffer
int FindMaximum(const float* pData, int nWidth, int nHeight, double* pValue, int* pX, int* pY);

/// Index of the first maximum of n values, as FindMaximum; 0 for a null buffer or n < 1.
int FindMaximumIndex(const float* pData, int n);

/// Column and row of an index. @return 1, or 0 with x and y left alone: an argument is negative or
/// the width is 0
int IndexToXY(int nIndex, int nWidth, int nHeight, int* pX, int* pY);

}  // namespace tessera
