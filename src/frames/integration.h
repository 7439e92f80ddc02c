// Integration: pixel values and integrated intensities at positions of an image.
#pragma once

#include "imaging/imgobj.h"
#include "records/refintpara.h"

#include <QList>

#include <vector>

namespace tessera {

/// The pixel values at positions; each coordinate is rounded half away from zero.
/// @return empty if the lists differ in length or a position is outside the image
QList<double> SampleAtPositions(const CImgObj<float>& img, const QList<double>& listX,
                                const QList<double>& listY);

/// Makes one window per position, centred at the pixel (rounded half away from zero), which is not yet
/// integrated.
/// @param nRadius, nBackground  radius of the disc and width of the ring, pixels; negative ones count as 0
/// @param vecWindow             takes the windows; empty if the lists differ in length
void MakeIntegrationWindows(const QList<double>& listX, const QList<double>& listY, int nRadius,
                            int nBackground, std::vector<RefIntPara>& vecWindow);

/// Integrates each window in place: the sum over the disc minus the mean of the ring times the number of
/// pixels of the disc.
///
/// Disc: d² <= R²; ring: R² < d² <= (R + B)². Sums are in single precision, columns in the outer loop and
/// rows in the inner one. A window that is not wholly inside the image gets 0 for fPeakSum and fIntensity,
/// and keeps its counts and background sum. A ring of width 0 measures no background: the intensity is then
/// the sum over the disc.
void IntegratePeaks(const CImgObj<float>& img, std::vector<RefIntPara>& vecWindow);

}  // namespace tessera
