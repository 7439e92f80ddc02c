// ResizeBicubic: resampling of an image by a cubic B-spline.
#pragma once

namespace tessera {

/// Resamples pSource to the size of pTarget.
///
/// Target pixel (i, j), column and row, takes the value of the spline at the place (i × nSourceWidth /
/// nTargetWidth, j × nSourceHeight / nTargetHeight) of the source, in pixels. Beyond an edge of the source
/// its edge pixels are repeated. The spline smooths: it does not go through the samples, but keeps constants
/// and straight slopes. All in single precision.
/// @return 1, or 0 for a null buffer or a side below 1
/// Source: Bourke (2001), Bicubic interpolation for image scaling; weights of the uniform cubic
/// B-spline, Schoenberg (1946), Q. Appl. Math. 4, 45.
int ResizeBicubic(float* pTarget, int nTargetWidth, int nTargetHeight, const float* pSource, int nSourceWidth,
                  int nSourceHeight);

/// Finds the first maximum, in the sense of FindMaximum(), of the image that ResizeBicubic() would make of
/// pSource. Only those pixels of it are computed that can be the maximum.
/// @param pX, pY  take column and row in the target image; must not be null
/// @return 1, or 0 where ResizeBicubic() returns it; pX and pY are then left alone
int FindResizedMaximum(int nTargetWidth, int nTargetHeight, const float* pSource, int nSourceWidth,
                       int nSourceHeight, int* pX, int* pY);

}  // namespace tessera
