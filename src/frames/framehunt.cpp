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

const double g_dfCandidateFraction = 0.01;  // share of the pixels of a frame

/// The distance from a gap within which maxima are left out: twice the width of the narrow filter.
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

/// Integrates discs and rings on the smoothed frame in the work space, which is copied window by window.
void integrateKept(const CImgObj<COMPLEX>& imgWork, int nWidth, int nHeight,
                   std::vector<RefIntPara>& vecWindow)
{
    CImgObj<float> imgWindow;
    std::vector<RefIntPara> vecOne(1);
    for (RefIntPara& window : vecWindow) {
        const qint64 nReach = qint64(window.nRadius) + window.nBackground;
        if (window.nX - nReach < 0 || window.nX + nReach >= nWidth || window.nY - nReach < 0 ||
            window.nY + nReach >= nHeight) {
            continue;  // as IntegratePeaks(), which gives a peak at the edge no intensity
        }
        const int nSide = int(2 * nReach) + 1;
        imgWindow.Create(nSide, nSide);
        float* p = imgWindow.Data();
        for (int y = window.nY - int(nReach); y <= window.nY + int(nReach); ++y) {
            for (int x = window.nX - int(nReach); x <= window.nX + int(nReach); ++x) {
                *p++ = CAcmlFft::KeptPixel(imgWork.Data(), x, y, nHeight);
            }
        }
        vecOne[0] = window;
        vecOne[0].nX = vecOne[0].nY = int(nReach);
        IntegratePeaks(imgWindow, vecOne);
        window.fIntensity = vecOne[0].fIntensity;
    }
}

}  // namespace

FramePeaks huntFrame(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                     const MaskData& mask, CPeakFilters& filters, FrameHuntWork& work)
{
    const float fLeast = -100.f;  // of the band-passed frame; lower values occur beside very bright pixels
    FramePeaks peaks;
    CMaximaOfRows maxima(imgFrame.Width(), imgFrame.Height(), float(parameters.m_dfPeakThreshold),
                         g_dfCandidateFraction);
    const qint64 nBad = bandPassRows(imgFrame, parameters, filters, work.fft, work.imgWork, true,
                                     [&](int, const float* pRow) { maxima.add(pRow, fLeast); });
    if (nBad < 0) {
        return peaks;
    }
    peaks.bHunted = true;
    peaks.nBadPixels = nBad;
    peaks.bTooMany = maxima.tooMany();
    peaks.listX = maxima.listX();
    peaks.listY = maxima.listY();
    removeMaskedPeaks(mask, peaks.listX, peaks.listY);
    if (nBad > 0) {
        removePeaksAtGaps(imgFrame, reachOfGap(parameters), peaks.listX, peaks.listY);
    }
    std::vector<RefIntPara> vecWindow;
    MakeIntegrationWindows(peaks.listX, peaks.listY, wholePixels(parameters.m_dfIntegrationRadius),
                           wholePixels(parameters.m_dfIntegrationBackground), vecWindow);
    integrateKept(work.imgWork, imgFrame.Width(), imgFrame.Height(), vecWindow);
    peaks.listIPoint.reserve(int(vecWindow.size()));
    peaks.listI2D.reserve(int(vecWindow.size()));
    for (const RefIntPara& window : vecWindow) {
        peaks.listIPoint.append(
            double(CAcmlFft::KeptPixel(work.imgWork.Data(), window.nX, window.nY, imgFrame.Height())));
        peaks.listI2D.append(double(window.fIntensity));
    }
    return peaks;
}

}  // namespace tessera
