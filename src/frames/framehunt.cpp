#include "frames/framehunt.h"

#include "frames/integration.h"
#include "frames/localmaxima.h"
#include "frames/peakmask.h"
#include "frames/wholepixels.h"
#include "records/refintpara.h"

namespace tessera {

namespace {

const double g_dfCandidateFraction = 0.01;  // of the pixels of a frame

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
