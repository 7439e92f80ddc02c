// FindLocalMaxima: the strict local maxima of an image.
#pragma once

#include "imaging/imgobj.h"

#include <QList>

namespace tessera {

/// Pixels at or above a threshold that are strictly above each of their eight neighbours.
///
/// The outermost rows and columns hold no maxima; neither does an image of fewer than 3 rows or
/// columns. Comparisons with NaN fail, so a NaN is no maximum and has none beside it. The
/// positions come row by row.
/// @param listX, listY  replaced by columns and rows, whole numbers
/// @param dfFraction    with more than fraction * pixels (truncated) maxima found before another
///                      one both lists end up empty: too many candidates are noise
/// @return false for too many candidates
bool FindLocalMaxima(const CImgObj<float>& img, float fThreshold, QList<double>& listX, QList<double>& listY,
                     double dfFraction);

}  // namespace tessera
