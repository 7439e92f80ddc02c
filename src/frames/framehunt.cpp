#include "frames/framehunt.h"

#include "frames/framegaps.h"
#include "frames/integration.h"
#include "frames/localmaxima.h"
#include "frames/peakmask.h"
#include "frames/wholepixels.h"
#include "records/refintpara.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfCandidateFraction = 0.01;  // of the pixels of a frame

/// How near to a gap a maximum is none: a spot of twice the width of the narrow filter lies on both sides.
int reachOfGap(const PeakHuntingParameters& parameters)
{
    const int nLeast = 2;
    return std::max(nLeast, int(std::ceil(std::min(2 * parameters.m_dfPeakRadius, 1e3))));
}

void removePeaksAtGaps(const CImgObj<float>& img, int nReach, QList<double>& listX, QList<double>& listY)
{
    const auto isNearGap = [&](int nX, int nY) {
        for (int y = std::max(0, nY - nReach); y <= std::min(img.Height() - 1, nY + nReach); ++y) {
            for (int x = std::max(0, nX - nReach); x <= std::min(img.Width() - 1, nX + nReach); ++x) {
                const int nSquare = (x - nX) * (x - nX) + (y - nY) * (y - nY);
                if (nSquare <= nReach * nReach && isGapPixel(img, x, y)) {
                    return true;
                }
            }
        }
        return false;
    };
    QList<double> listKeptX, listKeptY;
    for (int n = 0; n < listX.size(); ++n) {
        if (!isNearGap(int(listX[n]), int(listY[n]))) {
            listKeptX.append(listX[n]);
            listKeptY.append(listY[n]);
        }
    }
    listX = listKeptX;
    listY = listKeptY;
}

}  // namespace

FramePeaks huntFrame(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                     const MaskData& mask, CPeakFilters& filters, FrameHuntWork& work)
{
    FramePeaks peaks;
    const qint64 nBad = frameSpectrum(imgFrame, work.fft, work.spectrum);
    if (nBad < 0 || !calBandPassImage(work.spectrum, parameters, filters, work.fft, work.imgProduct,
                                      work.imgBandPass, &work.imgSmooth))
        return peaks;
    peaks.bHunted = true;
    peaks.nBadPixels = nBad;
    peaks.bTooMany = !FindLocalMaxima(work.imgBandPass, float(parameters.m_dfPeakThreshold), peaks.listX,
                                      peaks.listY, g_dfCandidateFraction);
    removeMaskedPeaks(mask, peaks.listX, peaks.listY);
    if (nBad > 0)
        removePeaksAtGaps(imgFrame, reachOfGap(parameters), peaks.listX, peaks.listY);
    peaks.listIPoint = SampleAtPositions(work.imgSmooth, peaks.listX, peaks.listY);
    std::vector<RefIntPara> vecWindow;
    MakeIntegrationWindows(peaks.listX, peaks.listY, wholePixels(parameters.m_dfIntegrationRadius),
                           wholePixels(parameters.m_dfIntegrationBackground), vecWindow);
    IntegratePeaks(work.imgSmooth, vecWindow);
    peaks.listI2D.reserve(int(vecWindow.size()));
    for (const RefIntPara& window : vecWindow)
        peaks.listI2D.append(double(window.fIntensity));
    return peaks;
}

}  // namespace tessera
