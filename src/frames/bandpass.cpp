#include "frames/bandpass.h"

#include "frames/badpixels.h"

qint64 frameSpectrum(const CImgObj<float>& imgFrame, CAcmlFft& fft, CImgObj<COMPLEX>& imgSpectrum)
{
    const int nWidth = imgFrame.Width();
    const int nHeight = imgFrame.Height();
    if (!imgFrame.Data() || nWidth < 1 || nHeight < 1)
        return -1;
    imgSpectrum.Create(nWidth, nHeight);
    const qint64 nPixels = qint64(nWidth) * nHeight;
    qint64 nBad = 0;
    const float fMean = float(meanOfUsablePixels(imgFrame, nBad));
    const float* pFrame = imgFrame.Data();
    COMPLEX* pSpectrum = imgSpectrum.Data();
    for (qint64 i = 0; i < nPixels; ++i)
        pSpectrum[i] = {isUsablePixel(pFrame[i]) ? pFrame[i] - fMean : 0.f, 0.f};
    if (!fft.Transform(pSpectrum, nWidth, nHeight, -1))
        return -1;
    pSpectrum[0].re += float(double(fMean) * double(nPixels));
    return nBad;
}

bool filterSpectrum(const CImgObj<COMPLEX>& imgSpectrum, const CPeakFilters& filters, CAcmlFft& fft,
                    CImgObj<COMPLEX>& imgProduct, CImgObj<float>* pSmooth, CImgObj<float>* pBandPass)
{
    const int nWidth = imgSpectrum.Width();
    const int nHeight = imgSpectrum.Height();
    const auto hasSize = [&](const CImgObj<float>& img) {
        return img.Data() && img.Width() == nWidth && img.Height() == nHeight;
    };
    if (!imgSpectrum.Data() || !hasSize(filters.m_imgFilterSmooth) || !hasSize(filters.m_imgFilterBandPass))
        return false;
    const qint64 nPixels = qint64(nWidth) * nHeight;
    imgProduct.Create(nWidth, nHeight);
    const COMPLEX* pSpectrum = imgSpectrum.Data();
    const float* pSmoothFilter = filters.m_imgFilterSmooth.Data();
    const float* pBandFilter = filters.m_imgFilterBandPass.Data();
    COMPLEX* pProduct = imgProduct.Data();
    for (qint64 i = 0; i < nPixels; ++i) {
        const COMPLEX f = pSpectrum[i];
        pProduct[i] = {f.re * pSmoothFilter[i] - f.im * pBandFilter[i],
                       f.re * pBandFilter[i] + f.im * pSmoothFilter[i]};
    }
    pProduct[0] = {0.f, 0.f};
    if (!fft.Transform(pProduct, nWidth, nHeight, 1))
        return false;
    const double dfMean = double(pSpectrum[0].re) / double(nPixels);
    if (pSmooth) {
        pSmooth->Create(nWidth, nHeight);
        const float fOffset = float(dfMean * double(pSmoothFilter[0]));
        for (qint64 i = 0; i < nPixels; ++i)
            pSmooth->Data()[i] = pProduct[i].re + fOffset;
    }
    if (pBandPass) {
        pBandPass->Create(nWidth, nHeight);
        const float fOffset = float(dfMean * double(pBandFilter[0]));
        for (qint64 i = 0; i < nPixels; ++i)
            pBandPass->Data()[i] = pProduct[i].im + fOffset;
    }
    return true;
}

bool calBandPassImage(const CImgObj<COMPLEX>& imgSpectrum, const PeakHuntingParameters& parameters,
                      CPeakFilters& filters, CAcmlFft& fft, CImgObj<COMPLEX>& imgProduct,
                      CImgObj<float>& imgBandPass, CImgObj<float>* pSmooth)
{
    if (!updatePeakFilters(parameters, imgSpectrum.Width(), imgSpectrum.Height(), filters) ||
        !filterSpectrum(imgSpectrum, filters, fft, imgProduct, pSmooth, &imgBandPass))
        return false;
    float* p = imgBandPass.Data();
    const qint64 nPixels = qint64(imgBandPass.Width()) * imgBandPass.Height();
    for (qint64 i = 0; i < nPixels; ++i)
        p[i] = p[i] < -100.f ? 0.f : p[i];
    return true;
}
