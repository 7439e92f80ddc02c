#include "frames/bandpass.h"

#include "frames/badpixels.h"
#include "frames/gapfilling.h"

#include <cstddef>

namespace tessera {

qint64 frameSpectrum(const CImgObj<float>& imgFrame, CAcmlFft& fft, FrameSpectrum& spectrum)
{
    const int nWidth = imgFrame.Width();
    const int nHeight = imgFrame.Height();
    if (!imgFrame.Data() || nWidth < 1 || nHeight < 1)
        return -1;
    spectrum.nWidth = spectrum.nHeight = 0;
    spectrum.imgHalf.Create(nHeight, int(CAcmlFft::HalfCount(nWidth, nHeight) / std::size_t(nHeight)));
    const qint64 nPixels = qint64(nWidth) * nHeight;
    qint64 nBad = 0;
    const float fMean = float(meanOfUsablePixels(imgFrame, nBad));
    CImgObj<float> imgFilled;
    if (nBad > 0) {
        imgFilled.Copy(imgFrame);
        fillBadPixels(imgFilled);
    }
    const float* const pPixel = nBad > 0 ? imgFilled.Data() : imgFrame.Data();
    const auto lessMean = [&](int nRow, float* pRow) {
        const float* pFrame = pPixel + qint64(nRow) * nWidth;
        for (int x = 0; x < nWidth; ++x)
            pRow[x] = pFrame[x] - fMean;
    };
    if (!fft.TransformReal(lessMean, nWidth, nHeight, spectrum.imgHalf.Data()))
        return -1;
    spectrum.imgHalf.Data()[0].re += float(double(fMean) * double(nPixels));
    spectrum.nWidth = nWidth;
    spectrum.nHeight = nHeight;
    return nBad;
}

bool filterSpectrum(const FrameSpectrum& spectrum, const CPeakFilters& filters, CAcmlFft& fft,
                    CImgObj<COMPLEX>& imgProduct, CImgObj<float>* pSmooth, CImgObj<float>* pBandPass)
{
    const int nWidth = spectrum.nWidth;
    const int nHeight = spectrum.nHeight;
    if (nWidth < 1 || filters.m_nFilterWidth != nWidth || filters.m_nFilterHeight != nHeight)
        return false;
    imgProduct.Create(2 * spectrum.imgHalf.Width(), spectrum.imgHalf.Height());
    const double dfMean = double(spectrum.imgHalf.Data()[0].re) / (double(nWidth) * nHeight);
    const auto image = [&](CImgObj<float>* pImage, const CImgObj<float>& imgFilter) {
        if (!pImage)
            return CAcmlFft::FilteredImage();
        pImage->Create(nWidth, nHeight);
        return CAcmlFft::FilteredImage{pImage->Data(), float(dfMean * double(imgFilter.Data()[0]))};
    };
    return fft.TransformFiltered(spectrum.imgHalf.Data(), filters.m_imgFilterPair.Data(), nWidth, nHeight,
                                 imgProduct.Data(), image(pSmooth, filters.m_imgFilterSmooth),
                                 image(pBandPass, filters.m_imgFilterBandPass)) != 0;
}

bool calBandPassImage(const FrameSpectrum& spectrum, const PeakHuntingParameters& parameters,
                      CPeakFilters& filters, CAcmlFft& fft, CImgObj<COMPLEX>& imgProduct,
                      CImgObj<float>& imgBandPass, CImgObj<float>* pSmooth)
{
    if (!updatePeakFilters(parameters, spectrum.nWidth, spectrum.nHeight, filters) ||
        !filterSpectrum(spectrum, filters, fft, imgProduct, pSmooth, &imgBandPass))
        return false;
    float* p = imgBandPass.Data();
    const qint64 nPixels = qint64(imgBandPass.Width()) * imgBandPass.Height();
    for (qint64 i = 0; i < nPixels; ++i)
        p[i] = p[i] < -100.f ? 0.f : p[i];
    return true;
}

}  // namespace tessera
