// Contrast: the limits between which an image is shown, and the bytes it is shown as.
#pragma once

namespace tessera {

/// Contrast limits that cut off the fraction fPLow of the samples at the dark end and fPHigh at the
/// bright end. @return 1, or 0 with the limits as they were when there is nothing to count
int GetContrastLimits(const float* pData, int n, float fPLow, float fPHigh, int nBins, double* pLow,
                      double* pHigh);

/// Contrast limits for the first display of a frame: fractions 0.0001 (dark) and 0.001 (bright) over
/// 1000 bins, and the low limit lowered by 0.15 times the distance of the two, so that the background
/// does not turn black. @return as GetContrastLimits
int autoContrastLimits(const float* pData, int n, double* pLow, double* pHigh);

/// Maps [fLow, fHigh] linearly to [fOutMin, fOutMax], truncated to bytes and cut off at both ends.
///
/// fOutMin is raised to 0 and fOutMax lowered to 255. Equal limits give fOutMin everywhere. A sample
/// that is not a number gives fOutMin.
/// @return 1, or 0 for a null buffer
int FloatToByte(const float* pSource, unsigned char* pTarget, int n, float fLow, float fHigh, float fOutMin,
                float fOutMax);

/// FloatToByte with the limits of GetContrastLimits. Samples without a finite one among them give
/// fOutMin everywhere and the result 0.
/// @return 1, or 0 for a null buffer, n < 1, nBins < 1 or no finite sample
int FloatToByteScaled(const float* pSource, unsigned char* pTarget, int n, float fPLow, float fPHigh,
                      int nBins, float fOutMin, float fOutMax);

}  // namespace tessera
