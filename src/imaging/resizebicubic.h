// ResizeBicubic: resampling of an image by a cubic B-spline.
#pragma once

namespace tessera {

/// Resamples pSource to the size of pTarget.
///
/// Target pixel (i, j) is taken at (i × srcWidth/dstWidth, j × srcHeight/dstHeight), edge pixels
/// standing for those outside. The spline smooths: it does not go through the samples, but keeps
/// constants and straight slopes. All in single precision.
/// @return 1, or 0 for a null buffer or a side below 1
/// Source: Bourke (2001), Bicubic interpolation for image scaling; weights of the uniform cubic
/// B-spline, Schoenberg (1946), Q. Appl. Math. 4, 45.
int ResizeBicubic(float* pTarget, int nTargetWidth, int nTargetHeight, const float* pSource, int nSourceWidth,
                  int nSourceHeight);

/// The place of the first maximum, as FindMaximum(), of what ResizeBicubic() would make of pSource. Only the
/// part of it that may hold the maximum is made.
/// @return 1; 0, with x and y left alone, as ResizeBicubic()
int FindResizedMaximum(int nTargetWidth, int nTargetHeight, const float* pSource, int nSourceWidth,
                       int nSourceHeight, int* pX, int* pY);

}  // namespace tessera
