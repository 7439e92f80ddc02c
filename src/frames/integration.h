// Intensities at positions of an image: single pixels, and disc less ring.
#pragma once

#include "imaging/imgobj.h"
#include "records/refintpara.h"

#include <QList>

#include <vector>

namespace tessera {

/// The pixel values at positions, each coordinate rounded half away from zero.
/// @return empty if the lists differ in length or a position lies outside the image
QList<double> SampleAtPositions(const CImgObj<float>& img, const QList<double>& listX,
                                const QList<double>& listY);

/// One window per position, centred on the pixel (rounded half away from zero), not yet integrated.
/// @param nRadius, nBackground  disc radius and ring width, pixels; negative ones count as 0
/// @param vecWindow             replaced; empty if the lists differ in length
void MakeIntegrationWindows(const QList<double>& listX, const QList<double>& listY, int nRadius,
                            int nBackground, std::vector<RefIntPara>& vecWindow);

/// Integrates each window in place: the sum over the disc less the mean of the ring times its pixels.
///
/// Disc: d² <= R²; ring: R² < d² <= (R + B)². Sums are single precision, columns outer, rows inner.
/// A window that does not lie wholly inside the image gets 0 for fPeakSum and fIntensity, and keeps
/// its counts and background sum. A ring without pixels (width 0) measures no background: the
/// intensity is the plain sum over the disc.
void IntegratePeaks(const CImgObj<float>& img, std::vector<RefIntPara>& vecWindow);

}  // namespace tessera
