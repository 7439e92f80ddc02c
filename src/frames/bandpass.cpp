#include "frames/bandpass.h"

#include "frames/badpixels.h"
#include "frames/gapfilling.h"

#include <cstddef>

namespace tessera {

namespace {

/// Writes the half spectrum of a frame to pHalf. Unusable pixels are filled first.
/// @return the number of unusable pixels; -1 where the transform failed
qint64 halfSpectrum(const CImgObj<float>& imgFrame, CAcmlFft& fft, COMPLEX* pHalf)
{
    const int nWidth = imgFrame.Width();
    const int nHeight = imgFrame.Height();
    const qint64 nPixels = qint64(nWidth) * nHeight;
    const UsableMean usable = meanOfUsablePixels(imgFrame);
    const float fMean = float(usable.dfMean);
    CImgObj<float> imgFilled;
    if (usable.nBad > 0) {
        imgFilled.Copy(imgFrame);
        fillBadPixels(imgFilled);
    }
    const float* const pPixel = usable.nBad > 0 ? imgFilled.Data() : imgFrame.Data();
    const auto lessMean = [&](int nRow, float* pRow) {
        const float* pFrame = pPixel + qint64(nRow) * nWidth;
        for (int x = 0; x < nWidth; ++x) {
            pRow[x] = pFrame[x] - fMean;
        }
    };
    if (!fft.TransformReal(lessMean, nWidth, nHeight, pHalf)) {
        return -1;
    }
    pHalf[0].re += float(double(fMean) * double(nPixels));
    return usable.nBad;
}

}  // namespace

qint64 frameSpectrum(const CImgObj<float>& imgFrame, CAcmlFft& fft, FrameSpectrum& spectrum)
{
    const int nWidth = imgFrame.Width();
    const int nHeight = imgFrame.Height();
    if (!imgFrame.Data() || nWidth < 1 || nHeight < 1) {
        return -1;
    }
    spectrum.nWidth = spectrum.nHeight = 0;
    spectrum.imgHalf.Create(int(CAcmlFft::HalfCount(nWidth, nHeight)), 1);
    const qint64 nBad = halfSpectrum(imgFrame, fft, spectrum.imgHalf.Data());
    if (nBad < 0) {
        return -1;
    }
    spectrum.nWidth = nWidth;
    spectrum.nHeight = nHeight;
    return nBad;
}

bool filterSpectrum(const FrameSpectrum& spectrum, const CPeakFilters& filters, CAcmlFft& fft,
                    CImgObj<COMPLEX>& imgProduct, CImgObj<float>* pSmooth, CImgObj<float>* pBandPass)
{
    const int nWidth = spectrum.nWidth;
    const int nHeight = spectrum.nHeight;
    if (nWidth < 1 || filters.m_nFilterWidth != nWidth || filters.m_nFilterHeight != nHeight) {
        return false;
    }
    imgProduct.Create(2 * spectrum.imgHalf.Width(), 1);
    const double dfMean = double(spectrum.imgHalf.Data()[0].re) / (double(nWidth) * nHeight);
    const auto image = [&](CImgObj<float>* pImage, float fFilterAtZero) {
        if (!pImage) {
            return CAcmlFft::FilteredImage();
        }
        pImage->Create(nWidth, nHeight);
        return CAcmlFft::FilteredImage{pImage->Data(), float(dfMean * double(fFilterAtZero))};
    };
    return fft.TransformFiltered(spectrum.imgHalf.Data(), filters.m_imgFilterPair.Data(), nWidth, nHeight,
                                 imgProduct.Data(), image(pSmooth, filters.smoothAtZero()),
                                 image(pBandPass, filters.bandPassAtZero())) != 0;
}

bool calBandPassImage(const FrameSpectrum& spectrum, const PeakHuntingParameters& parameters,
                      CPeakFilters& filters, CAcmlFft& fft, CImgObj<COMPLEX>& imgProduct,
                      CImgObj<float>& imgBandPass, CImgObj<float>* pSmooth)
{
    if (!updatePeakFilters(parameters, spectrum.nWidth, spectrum.nHeight, filters) ||
        !filterSpectrum(spectrum, filters, fft, imgProduct, pSmooth, &imgBandPass)) {
        return false;
    }
    float* p = imgBandPass.Data();
    const qint64 nPixels = qint64(imgBandPass.Width()) * imgBandPass.Height();
    for (qint64 i = 0; i < nPixels; ++i) {
        p[i] = p[i] < -100.f ? 0.f : p[i];
    }
    return true;
}

qint64 bandPassRows(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                    CPeakFilters& filters, CAcmlFft& fft, CImgObj<COMPLEX>& imgWork, bool bKeepSmooth,
                    const CAcmlFft::FnTakeRow& fnRow)
{
    const int nWidth = imgFrame.Width();
    const int nHeight = imgFrame.Height();
    if (!imgFrame.Data() || !updatePeakFilters(parameters, nWidth, nHeight, filters)) {
        return -1;
    }
    const std::size_t nHalf = CAcmlFft::HalfCount(nWidth, nHeight);
    imgWork.Create(int(2 * nHalf), 1);
    COMPLEX* const pHalf = imgWork.Data() + nHalf;
    const qint64 nBad = halfSpectrum(imgFrame, fft, pHalf);
    if (nBad < 0) {
        return -1;
    }
    const double dfMean = double(pHalf[0].re) / (double(nWidth) * nHeight);
    const CAcmlFft::KeptImage kept{bKeepSmooth, float(dfMean * double(filters.smoothAtZero()))};
    const float fConstant = float(dfMean * double(filters.bandPassAtZero()));
    return fft.FilterInPlace(imgWork.Data(), filters.m_imgFilterPair.Data(), nWidth, nHeight, kept, fConstant,
                             fnRow)
               ? nBad
               : -1;
}

}  // namespace tessera
