// FitPeak2D: fit of a two-dimensional Lorentzian to a spot on a frame.
#pragma once

#include "imaging/imgobj.h"

#include <vector>

namespace tessera {

/// Fits I(x, y) = A / (1 + (x − x0)²/Bx + (y − y0)²/By) to the box of nHalfSize pixels around (x, y).
///
/// The box is cut off at the edges of the image. Pixels at or above dfSaturation, and those that are
/// not finite, do not enter. The fit starts at (x, y) with Bx = By = 1. The degrees of freedom behind the
/// errors are the pixels of the box less 5, masked ones included: where many are masked, the errors come
/// out too small.
/// @param x, y  column and row in image pixels, whole numbers being pixel centres; the start goes in,
///              the fitted centre comes out
/// @param bConstantBackground  a constant C is added to the Lorentzian and fitted with it; it starts as the
///              mean of the outermost pixels of the box
/// @return 11 values: A, x0, Bx, y0, By (centre relative to the box, squared half widths), their
///         standard errors in this order (+infinity where no more pixels enter the fit than it has
///         parameters), and info of CLmdifFit::Run; with a constant background 13, C and its standard
///         error behind them. All are −1, and x and y stay, when the box is empty or the start
///         is not a number
std::vector<double> FitPeak2D(const CImgObj<float>& img, double& x, double& y, int nHalfSize,
                              double dfSaturation, bool bConstantBackground = false);

/// FitPeak2D for each position; the positions are replaced by the fitted ones.
/// @param nJobs  fits side by side; the results do not depend on it
/// @return one result per position; empty, with nothing changed, when the lists differ in length or are empty
/// @throw std::bad_alloc when memory runs out
std::vector<std::vector<double>> FitPeakList(const CImgObj<float>& img, std::vector<double>& vecX,
                                             std::vector<double>& vecY, int nHalfSize, double dfSaturation,
                                             bool bConstantBackground = false, int nJobs = 1);

}  // namespace tessera
